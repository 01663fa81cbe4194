// What the tests of the organiser's window share: a real window on a catalogue of the test's own, used by mouse and
// keys, in English and with settings of its own.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QApplication>
#include <QTest>

#include <host/window/MainWindow.h>
#include <tests/support/Environment.h>
#include <tests/system/HostTest.h>

namespace HalyonTest
{
class WindowFixture : public HostTest
{
protected:
    WindowFixture();
    ~WindowFixture() override;

    // Shows a window and waits until it knows whether there is a catalogue.
    void OpenWindow();
    // As the user does, who then starts it anew.
    void CloseWindow();

    // Turns the main loop until `isTrue`, and fails when that takes too long.
    void Until(const char* what, const std::function<bool()>& isTrue);
    void UntilItems(std::size_t count);

    // Drops a file or folder on the window.
    void Drop(const std::filesystem::path& path);
    void Click(const QModelIndex& item);
    void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    template <class Widget>
    [[nodiscard]] Widget& Find(const char* name)
    {
        auto* widget = m_window->findChild<Widget*>(QString::fromUtf8(name));
        EXPECT_NE(widget, nullptr) << name;
        return *widget;
    }
    [[nodiscard]] HynHost::TimelineView& Timeline() { return m_window->Timeline(); }
    [[nodiscard]] std::size_t Count() { return Timeline().Index().Items().size(); }
    [[nodiscard]] QModelIndex Row(int row) { return Timeline().model()->index(row, 0); }
    [[nodiscard]] std::string Message();

    Environment m_environment;
    QApplication& m_application;
    std::unique_ptr<HynHost::Texts> m_texts;
    Halyon::CHynAutoPtr<Halyon::CHynThreadManager> m_spManager;
    std::unique_ptr<HynHost::MainWindow> m_window;
};
} // namespace HalyonTest
