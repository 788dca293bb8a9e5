#include "app/SingleInstance.h"

#include <system_error>

#include <QByteArray>
#include <QLocalSocket>
#include <cerrno>
#include <utility>

namespace skyflare {

namespace {

constexpr int patienceMs = 10000; // of a later process with the first one
/// What a Wayland desktop gives a program that the user has just started, and asks for when a window wants to
/// come to the front.
constexpr const char *tokenVariable = "XDG_ACTIVATION_TOKEN";

QString socketPath(const std::filesystem::path &folder)
{
    return QString::fromStdString((folder / "window.socket").string());
}

Error failure(const QString &message)
{
    return {"instance", 0, message.toStdString()};
}

} // namespace

SingleInstance::SingleInstance(OwnerLock lock, std::filesystem::path folder)
    : lock_(std::move(lock)), folder_(std::move(folder))
{
}

Result<std::unique_ptr<SingleInstance>> SingleInstance::claim(const std::filesystem::path &folder)
{
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed)
        return Error{"instance", failed.value(), folder.string() + ": " + failed.message()};
    auto lock = OwnerLock::acquire(folder / "window");
    if (lock)
        return std::unique_ptr<SingleInstance>(new SingleInstance(std::move(*lock), folder)); // NOLINT
    if (lock.error().code == EWOULDBLOCK)
        return std::unique_ptr<SingleInstance>();
    return lock.error();
}

Result<> SingleInstance::activateFirst(const std::filesystem::path &folder)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath(folder));
    if (!socket.waitForConnected(patienceMs))
        return failure("it is running already, and does not answer: " + socket.errorString());
    socket.write(qgetenv(tokenVariable) + '\n');
    // Until the first has read it: it hangs up then.
    if (socket.state() != QLocalSocket::UnconnectedState && !socket.waitForDisconnected(patienceMs))
        return failure(QStringLiteral("it is running already, and does not answer"));
    return {};
}

Result<> SingleInstance::listen(std::function<void()> activated)
{
    activated_ = std::move(activated);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { serveNext(); });
    QLocalServer::removeServer(socketPath(folder_)); // of a process that was killed
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_.listen(socketPath(folder_)))
        return failure(server_.errorString());
    return {};
}

void SingleInstance::serveNext()
{
    QLocalSocket *const socket = server_.nextPendingConnection();
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QObject::connect(socket, &QLocalSocket::readyRead, &server_, [this, socket] {
        if (!socket->canReadLine())
            return;
        const QByteArray token = socket->readLine().trimmed();
        if (!token.isEmpty())
            qputenv(tokenVariable, token); // taken by the next requestActivate()
        socket->disconnectFromServer();
        activated_();
    });
}

} // namespace skyflare
