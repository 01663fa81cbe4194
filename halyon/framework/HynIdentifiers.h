// The framework's shared list of class and interface identifiers.
//
// Every identifier is constant data under its own plain (unmangled) name; the loadable module exports the whole list,
// so that a component may also find one by name. Components of other modules own most of them: this module creates
// `CLSID_HynSQConnection` and answers the SQ, thread and `IID_IHynUnknown` identifiers.
#pragma once

#include <halyon/framework/HynGuid.h>

namespace Halyon
{
#pragma GCC visibility push(default) // the module exports the table
extern "C"
{
    extern const HYN_GUID CLSID_IHynMetaDataProcessor;
    extern const HYN_GUID CLSID_HynAction;
    extern const HYN_GUID CLSID_HynBrowser;
    extern const HYN_GUID CLSID_HynCheckThirdParty;
    extern const HYN_GUID CLSID_HynDBCheckUpdate;
    extern const HYN_GUID CLSID_HynDisplay;
    extern const HYN_GUID CLSID_HynFrameWork;
    extern const HYN_GUID CLSID_HynModule;
    extern const HYN_GUID CLSID_HynSQConnection;
    extern const HYN_GUID CLSID_HynThumbStore;
    extern const HYN_GUID CLSID_HynViewer;
    extern const HYN_GUID IID_IHynAction;
    extern const HYN_GUID IID_IHynActionManager;
    extern const HYN_GUID IID_IHynAssociateFileGroupPicker;
    extern const HYN_GUID IID_IHynBrowser;
    extern const HYN_GUID IID_IHynCalendarService;
    extern const HYN_GUID IID_IHynCalendarService2;
    extern const HYN_GUID IID_IHynCategoryManager;
    extern const HYN_GUID IID_IHynCategoryScene;
    extern const HYN_GUID IID_IHynCategoryScene2;
    extern const HYN_GUID IID_IHynCheckThirdParty;
    extern const HYN_GUID IID_IHynComDllMgr;
    extern const HYN_GUID IID_IHynDBCheckUpdate;
    extern const HYN_GUID IID_IHynDisplay;
    extern const HYN_GUID IID_IHynDisplayManager;
    extern const HYN_GUID IID_IHynDropTarget;
    extern const HYN_GUID IID_IHynEnumFilter;
    extern const HYN_GUID IID_IHynEnumMediaFile;
    extern const HYN_GUID IID_IHynEnumMenuItem;
    extern const HYN_GUID IID_IHynEventHandler;
    extern const HYN_GUID IID_IHynEventParam;
    extern const HYN_GUID IID_IHynFileAssociatePicker;
    extern const HYN_GUID IID_IHynFileAssociatePicker2;
    extern const HYN_GUID IID_IHynFilterService;
    extern const HYN_GUID IID_IHynFlagService;
    extern const HYN_GUID IID_IHynFrameWork;
    extern const HYN_GUID IID_IHynGlobalInitRegister;
    extern const HYN_GUID IID_IHynLibraryFolderSet;
    extern const HYN_GUID IID_IHynLibraryService;
    extern const HYN_GUID IID_IHynLibrarySet;
    extern const HYN_GUID IID_IHynMainModule;
    extern const HYN_GUID IID_IHynMediaFile;
    extern const HYN_GUID IID_IHynMediaFileSet;
    extern const HYN_GUID IID_IHynMediaFileSet2;
    extern const HYN_GUID IID_IHynMediaFileSet3;
    extern const HYN_GUID IID_IHynMediaService;
    extern const HYN_GUID IID_IHynMemBlock;
    extern const HYN_GUID IID_IHynMenuItem;
    extern const HYN_GUID IID_IHynMetaDataProcessor;
    extern const HYN_GUID IID_IHynModule;
    extern const HYN_GUID IID_IHynOrganizer;
    extern const HYN_GUID IID_IHynPlugInBase;
    extern const HYN_GUID IID_IHynProfile;
    extern const HYN_GUID IID_IHynSQCommand;
    extern const HYN_GUID IID_IHynSQConnection;
    extern const HYN_GUID IID_IHynSQRecordSet;
    extern const HYN_GUID IID_IHynThread;
    extern const HYN_GUID IID_IHynThread2;
    extern const HYN_GUID IID_IHynThread3;
    extern const HYN_GUID IID_IHynThreadManager;
    extern const HYN_GUID IID_IHynThreadManager2;
    extern const HYN_GUID IID_IHynThumbStore;
    extern const HYN_GUID IID_IHynThumbStore2;
    extern const HYN_GUID IID_IHynThumbStore3;
    extern const HYN_GUID IID_IHynUnknown;
    extern const HYN_GUID IID_IHynViewer;
    extern const HYN_GUID IID_IHynViewerBar;
    extern const HYN_GUID IID_IHynViewerCondition;
}
#pragma GCC visibility pop
} // namespace Halyon
