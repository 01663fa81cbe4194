#include <tests/window/WindowFixture.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

#include <host/window/Style.h>

using namespace HynHost;
using namespace std::chrono_literals;

namespace HalyonTest
{
namespace
{
// Never ended: when static objects go, the toolkit's own may have gone before.
QApplication& TheApplication()
{
    static int s_argc = 1;
    static char s_name[] = "window_test";
    static char* s_argv[] = {s_name, nullptr};
    static auto* s_application = new QApplication(s_argc, s_argv);
    return *s_application;
}
} // namespace

WindowFixture::WindowFixture() : m_application(TheApplication())
{
    m_environment.Set("HALYON_MODULE", HYNSQ_MODULE);
    m_environment.Set("HOME", Path("").c_str());
    m_environment.Set("XDG_DATA_HOME", nullptr);
    m_environment.Set("LC_ALL", "en_GB.UTF-8");
    m_environment.Set("LANGUAGE", nullptr);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QString::fromStdString(Path("config")));
    ApplyStyle(m_application, Appearance::Light);
    m_texts = std::make_unique<Texts>();
    m_spManager = new Halyon::CHynThreadManager;
    m_spManager->InitMainThread(nullptr);
}

WindowFixture::~WindowFixture()
{
    m_window.reset();
    m_spManager->UnRegisterAll();
}

void WindowFixture::OpenWindow()
{
    m_window = std::make_unique<MainWindow>(*m_spManager, Catalog(), *m_texts);
    m_window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
    m_window->activateWindow();
    m_window->Open();
    Until("opened", [this] { return Count() > 0 || Find<QWidget>("emptyAction").isVisible(); });
}

void WindowFixture::CloseWindow()
{
    m_window->close();
    m_window.reset();
}

void WindowFixture::Until(const char* what, const std::function<bool()>& isTrue)
{
    const auto giveUp = std::chrono::steady_clock::now() + 120s; // emulated machines are slow
    while (!isTrue())
    {
        if (std::chrono::steady_clock::now() > giveUp)
            throw std::runtime_error("not " + std::string(what) + "; the window says: " + Message());
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
}

void WindowFixture::UntilItems(std::size_t count)
{
    Until("there", [this, count] { return Count() == count; });
    ASSERT_EQ(Count(), count);
}

void WindowFixture::Drop(const std::filesystem::path& path)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDragEnterEvent enter(QPoint(200, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_window.get(), &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(200, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_window.get(), &drop);
}

void WindowFixture::Click(const QModelIndex& item)
{
    Timeline().scrollTo(item);
    QTest::mouseClick(Timeline().viewport(), Qt::LeftButton, {}, Timeline().visualRect(item).center());
}

void WindowFixture::Press(int key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(&Timeline(), static_cast<Qt::Key>(key), modifiers);
}

std::string WindowFixture::Message()
{
    return m_window->findChild<MessageBar*>(QStringLiteral("messages"))->Text().toStdString();
}
} // namespace HalyonTest
