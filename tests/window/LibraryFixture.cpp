#include <tests/window/LibraryFixture.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include <QCoreApplication>

#include <halyon/platform/DateTimeUtils.h>

namespace HalyonTest
{
using namespace std::chrono_literals;

LibraryFixture::LibraryFixture()
{
    static int s_argc = 1;
    static char s_name[] = "library_test";
    static char* s_argv[] = {s_name, nullptr};
    static const QCoreApplication s_application(s_argc, s_argv);
    m_environment.Set("HALYON_MODULE", HYNSQ_MODULE);
    m_environment.Set("HOME", Path("").c_str());
    m_environment.Set("XDG_DATA_HOME", nullptr);
    m_environment.Set("TZ", "UTC");
    TovTimeZoneChanged();
    m_spManager = new Halyon::CHynThreadManager;
    m_spManager->InitMainThread(nullptr);
}

LibraryFixture::~LibraryFixture()
{
    m_library.reset();
    m_spManager->UnRegisterAll();
}

void LibraryFixture::OpenLibrary()
{
    m_library = std::make_unique<HynHost::Library>(*m_spManager, Catalog(), m_told);
    m_library->Open();
    Until("opened", [this] { return !m_told.opened.empty() || !m_told.broken.empty(); });
}

void LibraryFixture::CloseLibrary()
{
    m_library.reset();
    m_told = {};
}

void LibraryFixture::Until(const char* what, const std::function<bool()>& isTrue)
{
    const auto giveUp = std::chrono::steady_clock::now() + 120s; // emulated machines are slow
    while (!isTrue())
    {
        if (std::chrono::steady_clock::now() > giveUp)
            throw std::runtime_error(std::string("not ") + what); // the rest of the test would look at nothing
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
}

void LibraryFixture::UntilIndexAfter(const std::function<void()>& action)
{
    const int before = m_told.indexes;
    action();
    Until("searched", [&] { return m_told.indexes > before; });
}

HynHost::ImportReport LibraryFixture::RunImport(const std::filesystem::path& folder)
{
    m_told.ended.clear();
    m_told.refused.clear();
    m_library->StartImport(folder.string());
    Until("ended", [this] { return !m_told.ended.empty() || !m_told.refused.empty(); });
    if (m_told.ended.empty())
        throw std::runtime_error(m_told.refused.front());
    Until("searched", [this] { return m_told.indexes > m_told.indexesAtEnd; });
    return m_told.ended.front();
}

std::string LibraryFixture::NameOf(long long id)
{
    return Query("SELECT name FROM file WHERE id = " + std::to_string(id));
}

long long LibraryFixture::IdOf(const std::string& name)
{
    return std::stoll("0" + Query("SELECT id FROM file WHERE name = '" + name + "'"));
}
} // namespace HalyonTest
