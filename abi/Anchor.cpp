// Names everything whose layout or slots other binaries rely on, so that it can be described and compared.
//
// Interfaces leave the module through `void**`: nothing that the module exports speaks of them. This library takes each
// by its own type. It is never installed and never run; `./check abi` reads its debug information.

#include <type_traits>

#include <halyon/database/IHynSQCommand.h>
#include <halyon/database/IHynSQConnection.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/CHynUnknown.h>
#include <halyon/framework/MyDll.h>
#include <halyon/platform/DateTimeUtils.h>
#include <halyon/platform/FileManager.h>
#include <halyon/platform/Interface.h>
#include <halyon/platform/LaunchServices.h>
#include <halyon/string/CTovStringW.h>
#include <halyon/thread/HynEventInfo.h>
#include <halyon/thread/IHynThread.h>
#include <halyon/thread/IHynThreadManager.h>
#include <halyon/tools/CHynVersionHelper.h>

namespace Halyon
{
// Numbers that travel between binaries: results, and identifiers of threads. As enumerators they have a value that the
// description tells.
enum class AbiResult : std::int32_t
{
    S_OK = HYN_S_OK,
    S_FALSE = HYN_S_FALSE,
    S_EVENT_HANDLED = HYN_S_EVENT_HANDLED,
    E_BUFFERTOOSMALL = HYN_E_BUFFERTOOSMALL,
    E_FAIL = HYN_E_FAIL,
    E_NOINTERFACE = HYN_E_NOINTERFACE,
    E_POINTER = HYN_E_POINTER,
    E_THREADNOTRUNNING = HYN_E_THREADNOTRUNNING,
    E_THREADNOEVENT = HYN_E_THREADNOEVENT,
    E_THREADNOTHREAD = HYN_E_THREADNOTHREAD,
    E_THREADRUNNING = HYN_E_THREADRUNNING,
    E_NOHANDLER = HYN_E_NOHANDLER,
    E_SQSTEP = HYN_E_SQSTEP,
    E_SQNULLVALUE = HYN_E_SQNULLVALUE,
};

enum class AbiThreadID : std::uint32_t
{
    Main = kHynMainThreadID,
    Current = kHynCurrentThreadID,
};

template <class T>
void Anchor(T*)
{
}

// A template is described once something needs it whole.
static_assert(sizeof(CHynAutoPtr<IHynUnknown>) == sizeof(void*));

// Interfaces.
template void Anchor(IHynUnknown*);
template void Anchor(IHynSQConnection*);
template void Anchor(IHynSQCommand*);
template void Anchor(IHynSQRecordSet*);
template void Anchor(IHynEventParam*);
template void Anchor(IHynEventHandler*);
template void Anchor(IHynThread*);
template void Anchor(IHynThread2*);
template void Anchor(IHynThread3*);
template void Anchor(IHynThreadManager*);
template void Anchor(IHynThreadManager2*);

// What components are built from.
template void Anchor(CHynUnknown*);
template void Anchor(CHynLock*);
template void Anchor(LockCounter<CHynLock>*);
template void Anchor(CHynAutoPtr<IHynUnknown>*);
template void Anchor(CTovStringW*);
template void Anchor(CTovStringWData*);
template void Anchor(HynEventInfo*);

// Plain values.
template void Anchor(HYN_GUID*);
template void Anchor(FILETIME*);
template void Anchor(POINT*);
template void Anchor(SRect32*);
template void Anchor(tagHYN_VERSION*);
template void Anchor(UTCDateTime*);
template void Anchor(LongDateRec*);
template void Anchor(FSRef*);
template void Anchor(FSCatalogInfo*);
template void Anchor(HFSUniStr255*);
template void Anchor(LSLaunchFSRefSpec*);
template void Anchor(CFRange*);
template void Anchor(Point*);
template void Anchor(Rect*);
template void Anchor(BitMap*);
template void Anchor(AbiResult*);
template void Anchor(AbiThreadID*);

// The entry points, and how hosts call them.
template void Anchor(decltype(MyDllGetClassObject)*);
template void Anchor(decltype(MyDllCanUnloadNow)*);
static_assert(std::is_same_v<decltype(&MyDllGetClassObject), HynGetClassObjectProc>);
static_assert(std::is_same_v<decltype(&MyDllCanUnloadNow), HynCanUnloadNowProc>);
} // namespace Halyon
