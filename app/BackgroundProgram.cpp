#include "app/BackgroundProgram.h"

#include "app/ApplicationId.h"
#include "platform/base/MainLoop.h"
#include "platform/base/StandardConsole.h"
#include "platform/linux/NotificationBoards.h"
#include "platform/linux/Sandbox.h"
#include "platform/linux/SystemRandom.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/UserDirectories.h"

#include <cstdlib>

namespace skyflare {

BackgroundPush::End runInBackground(const AppOptions &options)
{
    MainLoop main;
    const TerminationSignals signals([&main] { main.quit(); }); // before any thread
    const UserDirectories directories =
        options.dataFolder ? UserDirectories::under(*options.dataFolder) : UserDirectories::standard();
    StandardConsole console;
    SystemRandom random;
    PlatformThread thread;
    MessageBus sessionBus(MessageBus::Kind::Session, {thread, main, console});
    const auto board = makeNotificationBoard(sessionBus, applicationId);
    auto end = BackgroundPush::End::Done;
    const BackgroundPush push({.sessionBus = sessionBus,
                               .mainQueue = main,
                               .random = random,
                               .console = console,
                               .stateFolder = directories.state,
                               .applicationId = applicationId,
                               .board = board,
                               .afterEnd = isSandboxed() ? BackgroundNotifications::AfterEnd::Kept
                                                         : BackgroundNotifications::AfterEnd::Forgotten,
                               .ended = [&](BackgroundPush::End how, const std::string &activationToken) {
                                   if (how == BackgroundPush::End::OpenApp)
                                       end = how;
                                   if (!activationToken.empty())
                                       setenv("XDG_ACTIVATION_TOKEN", activationToken.c_str(), 1);
                                   main.quit();
                               }});
    main.run();
    return end;
}

} // namespace skyflare
