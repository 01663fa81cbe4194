// The organiser's window, a program of its own in a bundle: `hynhost show` starts it, so that no other subcommand loads
// the window system's libraries.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.show();
    return QApplication::exec();
}
