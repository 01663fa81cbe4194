// What a host finds in the module: identifiers, entry points, and a file that can be loaded and closed any number of
// times.

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <malloc.h>

#include <gtest/gtest.h>

#include "tests/framework/ForeignHost.h"
#include "tests/support/Allocations.h"

using namespace ForeignHost;
using HalyonTest::FailAllocation;
using HalyonTest::LiveAllocations;

namespace
{
// clang-format off
const struct { const char* name; const char* text; } kIdentifiers[] = {
    {"CLSID_IHynMetaDataProcessor", "F3D09580-A450-4ECB-8CEC-98B8E444D011"},
    {"CLSID_HynAction", "9469C3C2-D224-41BB-9C27-61C31955109D"},
    {"CLSID_HynBrowser", "E448596B-DCD9-4CDF-B471-29C39C9F93E5"},
    {"CLSID_HynCheckThirdParty", "11D1C278-2B39-4399-8057-84D6CBC2812C"},
    {"CLSID_HynDBCheckUpdate", "4D6CB596-92CE-474D-BE9A-D22DFB757812"},
    {"CLSID_HynDisplay", "AD5E6729-E854-44A2-9FAB-0637EFD9160F"},
    {"CLSID_HynFrameWork", "2AFC2E13-2502-4AE8-9682-894A2E5B7639"},
    {"CLSID_HynModule", "B036D9FE-F440-4B75-AFA6-FD7E76083C6E"},
    {"CLSID_HynSQConnection", "B12057F9-F564-452B-AFDE-28B3AE4D870C"},
    {"CLSID_HynThumbStore", "BDDA34B8-2193-46AC-B58D-588FF786BBA5"},
    {"CLSID_HynViewer", "36B9FB93-EBB7-426F-B012-9EFD64D9E778"},
    {"IID_IHynAction", "FA5CB8C1-11C9-4DFE-8B27-E3E73AE572CC"},
    {"IID_IHynActionManager", "451427B6-E607-46D1-8608-E040E36440D9"},
    {"IID_IHynAssociateFileGroupPicker", "519DADAB-8832-430A-AC87-F3B2F579C0DA"},
    {"IID_IHynBrowser", "8A1AB7C4-D102-4AC9-BE79-6466A01639C2"},
    {"IID_IHynCalendarService", "17CD0ED3-1CE6-46E6-860A-F60A09358F91"},
    {"IID_IHynCalendarService2", "68E5E3C2-38BE-4EDB-B070-59FB92AE2CD5"},
    {"IID_IHynCategoryManager", "E434D2AF-6F05-4281-9B19-23828244C4BB"},
    {"IID_IHynCategoryScene", "B42EEF1B-F7E6-4B18-8550-5986BC558020"},
    {"IID_IHynCategoryScene2", "AB747E24-5D70-46E2-858C-CECD4A5297E3"},
    {"IID_IHynCheckThirdParty", "43A5AA20-A038-4AE7-A94B-C07BEA43428B"},
    {"IID_IHynComDllMgr", "0A5E5983-4B97-493F-9EB2-3FD85F948FDF"},
    {"IID_IHynDBCheckUpdate", "669AB253-6E42-4EB9-AF3A-EEE3805A7522"},
    {"IID_IHynDisplay", "EAC7AB9C-1FB9-4EF2-9540-5025325941A0"},
    {"IID_IHynDisplayManager", "759B1F9E-48A0-49DE-BA56-5ABC12E6940D"},
    {"IID_IHynDropTarget", "3C149AC5-1C3E-4E1B-9C58-A8E6ACD44DDA"},
    {"IID_IHynEnumFilter", "612BA8D9-EB17-4EFF-A1AD-A196D0B5B2D1"},
    {"IID_IHynEnumMediaFile", "567804DE-AD0F-4E56-A1D2-A908F6355736"},
    {"IID_IHynEnumMenuItem", "B42CE128-7F35-476D-B96D-ABAE05BE2B10"},
    {"IID_IHynEventHandler", "BAC9D121-0E23-438F-86B4-8E748DB2F462"},
    {"IID_IHynEventParam", "D0042D30-B7F7-432A-B242-83B2AB47F63F"},
    {"IID_IHynFileAssociatePicker", "31646AEE-30DF-43F6-8600-5BE9443A146A"},
    {"IID_IHynFileAssociatePicker2", "27C19D9F-33E9-4DCA-A6F0-D1CEFA665FBC"},
    {"IID_IHynFilterService", "5CF03552-1699-431D-B728-B4EADBB5C12F"},
    {"IID_IHynFlagService", "9935EAC8-18C5-420D-BDE7-5EA4A5B77A69"},
    {"IID_IHynFrameWork", "7C7CFC50-95A0-4487-A48B-7A109F7ADA65"},
    {"IID_IHynGlobalInitRegister", "11A12CA4-AE15-4C3E-9072-FF0528438030"},
    {"IID_IHynLibraryFolderSet", "BBBE9DE9-9FE7-4B41-B838-7E2D5C388FEE"},
    {"IID_IHynLibraryService", "6F33741E-3A17-48CD-AFFD-B2DAA5D6F6FE"},
    {"IID_IHynLibrarySet", "C5C4DDC3-0320-4C43-9D5C-0963CA456577"},
    {"IID_IHynMainModule", "B40B46CF-65BE-4EF1-A756-F5A115313F2B"},
    {"IID_IHynMediaFile", "0BEF93F8-8BC5-426D-9DDA-986B7FD72336"},
    {"IID_IHynMediaFileSet", "27519C48-2F8E-4500-944A-32B3847565DA"},
    {"IID_IHynMediaFileSet2", "04B18E50-8E1C-495F-ACB3-AA3D98D95A8F"},
    {"IID_IHynMediaFileSet3", "5F2CAD18-C8CD-479E-A6B9-3F4F5DAF010F"},
    {"IID_IHynMediaService", "8C3A582F-E5E5-42C0-AB74-220F1647FF21"},
    {"IID_IHynMemBlock", "BDFD4F7F-8CE9-485D-9154-F387B280F1A9"},
    {"IID_IHynMenuItem", "4BAE644C-141A-4523-8D4E-1425FB472862"},
    {"IID_IHynMetaDataProcessor", "CC30CD60-7EA3-4DF3-B413-B8D30A674FCC"},
    {"IID_IHynModule", "D6B823D0-B62D-44FA-9BA8-F41D23025C3C"},
    {"IID_IHynOrganizer", "9FAAF155-540C-466B-9FFA-A2BA6CE58B90"},
    {"IID_IHynPlugInBase", "00BE137A-4B7C-4B83-BBF3-420EB19F507D"},
    {"IID_IHynProfile", "53EF225C-EF36-4121-BDDF-63B6C7FA7675"},
    {"IID_IHynSQCommand", "CF37A1A1-DC46-4F85-918D-8272B5D10F05"},
    {"IID_IHynSQConnection", "0AEC337B-D290-4817-8755-C5A3BCE7C85D"},
    {"IID_IHynSQRecordSet", "5B3C3780-967F-436C-9D74-110AC2773357"},
    {"IID_IHynThread", "A6579EB2-C30D-4D3B-9A15-B5C90EC5DFC8"},
    {"IID_IHynThread2", "3EB79737-B7D0-40D4-A259-2533B1CCEE8E"},
    {"IID_IHynThread3", "09786068-0268-418A-9A29-5E49E34A6CBD"},
    {"IID_IHynThreadManager", "96A82544-F2A1-4C3F-9484-D3C6F64474A9"},
    {"IID_IHynThreadManager2", "87213518-225D-468B-AE2A-130F03F1D4C8"},
    {"IID_IHynThumbStore", "8D418587-8E60-4CEA-A043-55A9A532C429"},
    {"IID_IHynThumbStore2", "544DD439-39F2-4DD2-B00A-04613072A54A"},
    {"IID_IHynThumbStore3", "17E0FC1C-27B5-411D-A7FB-F518A8B998E6"},
    {"IID_IHynUnknown", "FE15F6EB-1E69-4568-9111-3FB8FACBAAF9"},
    {"IID_IHynViewer", "018BFF6D-3292-4256-8490-A45A9446803E"},
    {"IID_IHynViewerBar", "13826685-F001-4236-868C-E62F821038D3"},
    {"IID_IHynViewerCondition", "9446C54A-12C0-4D25-9F32-D112567D38C9"},
};
// clang-format on

TEST(Identifiers, AreExportedUnderTheirPlainNamesWithTheirValues)
{
    const Module module;
    EXPECT_EQ(std::size(kIdentifiers), 68u);
    for (const auto& [name, text] : kIdentifiers)
    {
        const void* exported = module.Symbol(name);
        ASSERT_NE(exported, nullptr) << name;
        const Identifier expected = FromText(text);
        EXPECT_EQ(std::memcmp(exported, &expected, sizeof expected), 0) << name;
    }
}

TEST(EntryPoints, RefuseInOrderAndLeaveNothingBehind)
{
    const Module module;
    int marker = 0;
    const struct
    {
        const Identifier& cls;
        const Identifier& id;
        bool hasOut;
        std::int32_t expected;
    } cases[] = {
        {kConnection, kConnection, true, kNoInterface},   {kConnection, kConnection, false, kNoInterface},
        {kCommand, kThread, false, kNoInterface},         {kConnectionClass, kThread, true, kNoInterface},
        {kConnectionClass, kCommand, true, kNoInterface}, {kConnectionClass, kThread, false, kNoInterface},
        {kConnectionClass, kConnection, false, kPointer}, {kConnectionClass, kUnknown, false, kPointer},
    };
    for (const auto& test : cases)
    {
        void* out = &marker;
        const long long before = LiveAllocations();
        EXPECT_EQ(module.GetClassObject(test.cls, test.id, test.hasOut ? &out : nullptr), test.expected);
        EXPECT_EQ(LiveAllocations(), before);
        EXPECT_EQ(out, &marker);
    }
    // For an unknown class nothing is even asked for.
    const FailAllocation first(1);
    EXPECT_EQ(module.GetClassObject(kCommand, kUnknown, nullptr), kNoInterface);
    EXPECT_FALSE(FailAllocation::HasFailed());
}

TEST(EntryPoints, ReportMissingMemoryAndWorkAfterwards)
{
    const Module module;
    int marker = 0;
    void* out = &marker;
    {
        const FailAllocation guard(1);
        EXPECT_EQ(module.GetClassObject(kConnectionClass, kConnection, &out), kFail);
        EXPECT_TRUE(FailAllocation::HasFailed());
    }
    EXPECT_EQ(out, &marker);
    void* connection = module.MakeConnection();
    EXPECT_EQ(Release(connection), 0u);
}

TEST(EntryPoints, HandOverTheOnlyReferenceAndNeverForbidUnloading)
{
    const Module module;
    const long long before = LiveAllocations();
    void* connection = module.MakeConnection();
    EXPECT_GT(LiveAllocations(), before);
    EXPECT_EQ(module.CanUnloadNow(), kOk);
    EXPECT_EQ(AddRef(connection), 2u);
    EXPECT_EQ(Release(connection), 1u);
    EXPECT_EQ(Release(connection), 0u);
    EXPECT_EQ(LiveAllocations(), before);
}

// One life of the module, with an engine handle, a command and a record set in it.
void LoadUseAndClose()
{
    const Module module;
    constexpr int kConnect = 3;
    constexpr int kOpenText = 9;
    void* connection = module.MakeConnection();
    ASSERT_EQ(Call<std::int32_t>(connection, kConnect, u":memory:", u"a", u"b"), kOk);
    void* recordSet = nullptr;
    ASSERT_EQ(Call<std::int32_t>(connection, kOpenText, u"SELECT 1 AS one", &recordSet), kOk);
    EXPECT_EQ(Release(recordSet), 0u);
    EXPECT_EQ(Release(connection), 0u);
}

#if defined(__SANITIZE_THREAD__)
constexpr bool kThreadSanitizer = true;
#else
constexpr bool kThreadSanitizer = false;
#endif

long CountMappings()
{
    std::ifstream maps("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

TEST(ModuleLife, LoadingAndClosingAThousandTimesLeavesNothing)
{
    const auto rounds = [](int count)
    {
        for (int i = 0; i < count; ++i)
        {
            LoadUseAndClose();
            ASSERT_EQ(dlopen(HYNSQ_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded after round " << i;
        }
    };
    // The loader's own tables reach their size in the first half.
    rounds(500);
    const long long allocations = LiveAllocations();
    const std::size_t heap = mallinfo2().uordblks;
    const long mappings = CountMappings();
    rounds(500);
    EXPECT_EQ(LiveAllocations(), allocations);
    // The thread sanitizer maps memory of its own for each library that is loaded.
    if (!kThreadSanitizer)
    {
        EXPECT_EQ(CountMappings(), mappings);
    }
    // 0 under the sanitizers, whose allocators do not count here; they look for leaks themselves.
    EXPECT_LE(mallinfo2().uordblks, heap + std::size_t{500} * 16) << "no block a round";
}
} // namespace
