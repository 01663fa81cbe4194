// The slots of the thread interfaces with their arguments, and the identifiers that their objects answer: what other
// binaries have in their code.

#include <vector>

#include <gtest/gtest.h>

#include <halyon/thread/CHynMainThread.h>
#include <halyon/thread/CHynThreadManager.h>
#include <halyon/thread/CHynWorkerThread.h>

#include "tests/support/Slots.h"
#include "tests/thread/Doubles.h"
#include <validate/Frozen.h>

using Frozen::FromText;
using namespace HalyonTest;

namespace Halyon
{
namespace
{
using Slots = std::vector<int>;
using Register = HynResult(IHynEventHandler*, void*);
using Id = std::uint32_t;

TEST(ThreadSlots, OfAThread)
{
    using Send = HynResult(Id, std::uint32_t, std::int32_t, IHynEventParam*, void*);
    EXPECT_EQ((Slots{
                  SlotOf<Id()>(&IHynThread::GetThreadID),
                  SlotOf<HynResult(IHynThreadManager*, int*)>(&IHynThread::Start),
                  SlotOf<HynResult()>(&IHynThread::Stop),
                  SlotOf<HynResult()>(&IHynThread::Run),
                  SlotOf<HynResult(int)>(&IHynThread::SetPriority),
                  SlotOf<Register>(&IHynThread::RegisterHandler),
                  SlotOf<Register>(&IHynThread::UnRegisterHandler),
                  SlotOf<Send>(&IHynThread::PostEvent),
                  SlotOf<Send>(&IHynThread::SendEvent),
                  SlotOf<HynResult()>(&IHynThread2::ClearAllEvents),
                  SlotOf<HynResult(Id*, std::uint32_t)>(&IHynThread3::RemoveEvents),
              }),
              (Slots{3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));
    // Behind the destructor's two, a worker's own and the main thread's own.
    EXPECT_EQ((Slots{
                  SlotOf<HynResult(const HYN_GUID&, void**)>(&CHynWorkerThread::DefaultQueryInterface),
                  SlotOf<void()>(&CHynWorkerThread::InitThread),
                  SlotOf<void()>(&CHynWorkerThread::ExitThread),
                  SlotOf<HynResult()>(&CHynMainThread::ProcessEvent),
                  SlotOf<MPQueueID()>(&CHynMainThread::GetQueueID),
              }),
              (Slots{16, 17, 18, 16, 17}));
}

TEST(ThreadSlots, OfTheManager)
{
    using Send = HynResult(Id, std::uint32_t, std::int32_t, IHynEventParam*, Id, void*);
    EXPECT_EQ((Slots{
                  SlotOf<HynResult(CFBundleRef)>(&IHynThreadManager::InitMainThread),
                  SlotOf<HynResult(IHynThread*)>(&IHynThreadManager::RegisterThread),
                  SlotOf<HynResult(IHynThread*)>(&IHynThreadManager::UnRegisterThread),
                  SlotOf<HynResult(IHynThread**, Id)>(&IHynThreadManager::GetThread),
                  SlotOf<HynResult(IHynThread**)>(&IHynThreadManager::GetCurrentThread),
                  SlotOf<HynResult(IHynThread**)>(&IHynThreadManager::GetMainThread),
                  SlotOf<Send>(&IHynThreadManager::PostEvent),
                  SlotOf<Send>(&IHynThreadManager::SendEvent),
                  SlotOf<Register>(&IHynThreadManager::RegisterHandler),
                  SlotOf<Register>(&IHynThreadManager::UnRegisterHandler),
                  SlotOf<HynResult(Id*, std::uint32_t, Id)>(&IHynThreadManager2::RemoveEvents),
              }),
              (Slots{3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));
}

TEST(ThreadSlots, OfAHandler)
{
    EXPECT_EQ((Slots{
                  SlotOf<HynResult(Id*)>(&IHynEventHandler::GetEventID),
                  SlotOf<HynResult(void**)>(&IHynEventHandler::GetOwner),
                  SlotOf<HynResult(void*)>(&IHynEventHandler::SetOwner),
                  SlotOf<HynResult(std::uint32_t, std::int32_t, IHynEventParam*)>(&IHynEventHandler::HandleEvent),
                  SlotOf<HynResult(IHynEventHandler*, int*)>(&IHynEventHandler::IsSameHandler),
              }),
              (Slots{3, 4, 5, 6, 7}));
    const HalyonTest::HandlerPtr handler = MakeHandler(7);
    Id id = 0;
    void* owner = nullptr;
    EXPECT_EQ(handler->GetEventID(&id), HYN_S_OK);
    EXPECT_EQ(handler->SetOwner(&id), HYN_S_OK);
    EXPECT_EQ(handler->GetOwner(&owner), HYN_S_OK);
    EXPECT_EQ(id, 7u);
    EXPECT_EQ(owner, &id);
}

// Through the raw table, with the root's three slots.
TEST(ThreadSlots, AnswerEveryIdentifierWithTheWholeObject)
{
    const struct
    {
        void* object;
        std::vector<const char*> identifiers;
    } cases[] = {
        {new CHynWorkerThread,
         {"A6579EB2-C30D-4D3B-9A15-B5C90EC5DFC8", "3EB79737-B7D0-40D4-A259-2533B1CCEE8E",
          "09786068-0268-418A-9A29-5E49E34A6CBD"}},
        {new CHynThreadManager, {"96A82544-F2A1-4C3F-9484-D3C6F64474A9", "87213518-225D-468B-AE2A-130F03F1D4C8"}},
        {MakeHandler(7).Detach(), {"BAC9D121-0E23-438F-86B4-8E748DB2F462"}},
        {new Param, {"D0042D30-B7F7-432A-B242-83B2AB47F63F"}},
    };
    for (auto [object, identifiers] : cases)
    {
        identifiers.push_back("FE15F6EB-1E69-4568-9111-3FB8FACBAAF9");
        const std::uint32_t held = Frozen::AddRef(object);
        for (const char* text : identifiers)
        {
            void* found = nullptr;
            EXPECT_EQ(Frozen::Query(object, FromText(text), &found), Frozen::kOk) << text;
            EXPECT_EQ(found, object) << text;
            EXPECT_EQ(Frozen::Release(object), held) << text;
        }
        while (Frozen::Release(object) != 0)
        {
        }
    }
}
} // namespace
} // namespace Halyon
