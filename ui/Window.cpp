#include "ui/Window.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPointer>
#include <QQmlComponent>

namespace skyflare {

void prepareUserInterface()
{
    const QString inter = QStringLiteral("Inter");
    if (!QFontDatabase::hasFamily(inter))
        return;
    QFont font = QGuiApplication::font();
    font.setFamily(inter);
    QGuiApplication::setFont(font);
}

Window::Window(AppearanceSetting *appearance)
{
    engine_.addImportPath(QStringLiteral("qrc:/"));
    QObject::connect(&engine_, &QQmlEngine::quit, QCoreApplication::instance(), &QCoreApplication::quit,
                     Qt::QueuedConnection);
    load();
    if (appearance == nullptr)
        return;
    appearance->observe([theme = QPointer<Theme>(&theme())](ColorScheme scheme) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [theme, scheme] {
                if (theme)
                    theme->setColorScheme(scheme);
            },
            Qt::QueuedConnection);
    });
}

Window::~Window() = default;

void Window::setRootViewController(std::shared_ptr<ViewController> root)
{
    root_ = std::move(root);
    screens_.setRootViewController(root_);
}

void Window::makeKeyAndVisible()
{
    if (window_->isVisible())
        window_->raise();
    window_->show();
    window_->requestActivate();
}

Theme &Window::theme()
{
    // Known since load(): a type has its number once its module has been imported.
    return *engine_.singletonInstance<Theme *>(qmlTypeId("Skyflare.Ui", 1, 0, "Theme"));
}

void Window::load()
{
    QQmlComponent component(&engine_, QUrl(QStringLiteral("qrc:/Skyflare/Ui/qml/MainWindow.qml")));
    // Qt 6.4 crashes where it is to make something of a file that does not load.
    if (component.isReady())
        window_.reset(qobject_cast<QQuickWindow *>(component.createWithInitialProperties(
            {{QStringLiteral("screens"), QVariant::fromValue(&screens_)}})));
    if (!window_)
        qFatal("The window does not load: %s", qUtf8Printable(component.errorString()));
}

} // namespace skyflare
