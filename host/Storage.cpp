#include <host/Storage.h>

#include <memory>

#include <dlfcn.h>
#include <sqlite3.h>

#include <host/HostError.h>
#include <host/PrintableText.h>

namespace HynHost
{
namespace
{
constexpr const char* kAction = "cannot load the storage layer";
} // namespace

void LoadStorage(const std::string& library)
{
    // Never closed: the engine unloads a library with the connection that loaded it, though its layer is registered.
    // And the engine's reason would be that of a second try, under another name.
    if (dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr)
        throw HostError(kAction, PrintableText(library), dlerror());

    sqlite3* opened = nullptr;
    const int openResult = sqlite3_open(":memory:", &opened);
    const std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection(opened, sqlite3_close);
    if (openResult != SQLITE_OK ||
        sqlite3_db_config(opened, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr) != SQLITE_OK)
        throw HostError(kAction, PrintableText(library), "the engine loads no extensions");

    char* text = nullptr;
    const int result = sqlite3_load_extension(opened, library.c_str(), nullptr, &text);
    const std::unique_ptr<char, void (*)(void*)> reason(text, sqlite3_free);
    if (result != SQLITE_OK)
        throw HostError(kAction, PrintableText(library), text == nullptr ? sqlite3_errstr(result) : text);
}
} // namespace HynHost
