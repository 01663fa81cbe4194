// Loads the component by its path and counts the words of the arguments.
//   count_words MODULE TEXT...
#include <cstdio>
#include <dlfcn.h>

#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/MyDll.h>
#include <halyon/string/CTovStringW.h>

#include "IWordCounter.h"

using namespace Halyon;

static int Count(HynGetClassObjectProc getClassObject, char** texts)
{
    CHynAutoPtr<IWordCounter> counter;
    const HynResult result =
        getClassObject(CLSID_WordCounter, IID_IWordCounter, reinterpret_cast<void**>(counter.Receive()));
    if (HynFailed(result))
        return std::fprintf(stderr, "count_words: no counter from the module: %s\n", HynResultName(result)), 1;
    for (; *texts != nullptr; ++texts)
        counter->AddText(CTovStringW::FromUTF8(*texts));
    std::uint32_t count = 0;
    counter->GetCount(&count);
    std::printf("%u words\n", count);
    return 0;
}

int main(int argc, char** argv)
{
    if (argc < 2)
        return std::fprintf(stderr, "usage: count_words MODULE TEXT...\n"), 2;
    void* module = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    void* entry = module != nullptr ? dlsym(module, kHynGetClassObjectName) : nullptr;
    if (entry == nullptr)
        return std::fprintf(stderr, "count_words: %s\n", dlerror()), 1;
    const int status = Count(reinterpret_cast<HynGetClassObjectProc>(entry), argv + 2);

    // Only now: the last object of the module is gone, so that nothing of it is called any more.
    dlclose(module);
    return status;
}
