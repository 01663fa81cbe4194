#include <host/DefaultApplication.h>

#include <memory>

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

namespace HynHost
{
namespace
{
struct Unref
{
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
template <class T>
using Object = std::unique_ptr<T, Unref>;
} // namespace

std::string DefaultApplication(const std::string& path)
{
    const Object<GFile> file(g_file_new_for_path(path.c_str()));
    const Object<GAppInfo> application(g_file_query_default_handler(file.get(), nullptr, nullptr));
    if (application == nullptr || !G_IS_DESKTOP_APP_INFO(application.get()))
        return {};
    const char* entry = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application.get()));
    return entry == nullptr ? "" : entry;
}
} // namespace HynHost
