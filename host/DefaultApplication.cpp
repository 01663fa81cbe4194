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

std::vector<Application> ApplicationsFor(const std::string& path)
{
    std::vector<Application> applications;
    const Object<GFile> file(g_file_new_for_path(path.c_str()));
    const Object<GFileInfo> info(g_file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                                                   G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    if (info == nullptr || g_file_info_get_content_type(info.get()) == nullptr)
        return applications;
    GList* all = g_app_info_get_all_for_type(g_file_info_get_content_type(info.get()));
    for (const GList* at = all; at != nullptr; at = at->next)
    {
        auto* application = static_cast<GAppInfo*>(at->data);
        const char* entry = G_IS_DESKTOP_APP_INFO(application)
                                ? g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application))
                                : nullptr;
        if (entry != nullptr)
            applications.push_back({g_app_info_get_display_name(application), entry});
    }
    g_list_free_full(all, g_object_unref);
    return applications;
}

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
