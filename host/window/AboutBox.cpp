#include <host/window/AboutBox.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <halyon/framework/HynVersion.h>
#include <halyon/tools/CHynIconHelper2.h>
#include <halyon/tools/CHynVersionHelper.h>
#include <host/window/Style.h>

using Halyon::CHynIconHelper2;

namespace HynHost
{
namespace
{
constexpr int kIcon = 96;

// A version has four numbers where it is read, and three here.
QString Version()
{
    Halyon::tagHYN_VERSION version{};
    Halyon::CHynVersionHelper::GetVersion(u"" HALYON_VERSION_TEXT ".0", version);
    return QStringLiteral("%1.%2.%3").arg(version.first).arg(version.second).arg(version.third);
}
} // namespace

QIcon ProgramIcon()
{
    Halyon::OpaqueIconRef* icon = CHynIconHelper2::LoadIcon(u"organiser.png", Halyon::CFBundleGetMainBundle());
    QIcon shown = Halyon::QIconFromIconRef(icon);
    CHynIconHelper2::DestroyIcon(icon);
    return shown;
}

void ShowAbout(const Texts& texts, QWidget* parent)
{
    QDialog box(parent);
    box.setWindowTitle(texts("menu.about"));
    auto* column = new QVBoxLayout(&box);
    column->setContentsMargins(6 * kGrid, 4 * kGrid, 6 * kGrid, 3 * kGrid);
    column->setSpacing(kGrid);
    auto* icon = new QLabel(&box);
    icon->setPixmap(ProgramIcon().pixmap(QSize(kIcon, kIcon), parent->devicePixelRatioF()));
    icon->setAlignment(Qt::AlignCenter);
    auto* name = new QLabel(texts("program"), &box);
    name->setFont(SizedFont(1.5, QFont::DemiBold));
    name->setAlignment(Qt::AlignCenter);
    auto* version = new QLabel(texts("about.version", {{QLatin1String("version"), Version()}}), &box);
    version->setProperty("weak", true);
    version->setAlignment(Qt::AlignCenter);
    auto* words = new QLabel(texts("about.words"), &box);
    words->setAlignment(Qt::AlignCenter);
    auto* close = new QPushButton(texts("close"), &box);
    close->setDefault(true);
    column->addWidget(icon);
    column->addWidget(name);
    column->addWidget(version);
    column->addSpacing(kGrid);
    column->addWidget(words);
    column->addSpacing(2 * kGrid);
    column->addWidget(close, 0, Qt::AlignCenter);
    QObject::connect(close, &QPushButton::clicked, &box, &QDialog::accept);
    box.exec();
}
} // namespace HynHost
