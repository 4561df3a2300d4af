// Shows a tray icon with a menu and writes what happens to it on standard output.
//
//   tray_probe menu|bare    with a menu of the icon's, or one of its own for right clicks
#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>
#include <cstdio>
#include <string_view>

namespace {

void say(const char* what, int number = 0)
{
    std::printf("%s %d\n", what, number);
    std::fflush(stdout);
}

QIcon greenSquare()
{
    QPixmap picture(22, 22);
    picture.fill(Qt::green);
    return picture;
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("Probe");
    const bool hasMenu = argc > 1 && std::string_view(argv[1]) == "menu";
    QMenu menu;
    int openings = 0;
    auto* const first = menu.addAction("First", [] { say("chosen"); });
    first->setShortcut(QKeySequence("Meta+Alt+X"));
    menu.addSeparator();
    menu.addAction("Last", [] { QCoreApplication::quit(); });
    QObject::connect(&menu, &QMenu::aboutToShow, [&] {
        ++openings;
        QMetaObject::invokeMethod(
            first, [&] { first->setText("First " + QString::number(openings)); }, Qt::QueuedConnection);
        say("opened", openings);
    });
    QSystemTrayIcon icon(greenSquare());
    icon.setToolTip("Probe");
    if (hasMenu)
        icon.setContextMenu(&menu);
    QObject::connect(&icon, &QSystemTrayIcon::activated, [&](QSystemTrayIcon::ActivationReason reason) {
        say("activated", reason);
        if (!hasMenu && reason == QSystemTrayIcon::Context)
            menu.popup(QCursor::pos());
    });
    icon.show();
    return QApplication::exec();
}
