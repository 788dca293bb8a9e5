#pragma once

#include <list>
#include <mutex>

namespace skyflare {

/// Hangs up on clients that owe us something for too long: the rest of a request, or the next one.
///
/// Threads: any.
class SlowClients {
public:
    /// One connection, from its beginning to its end.
    struct Client {
        int socket = -1;
        double owesSince = 0; ///< seconds of uptime
        bool isOurTurn = false;
    };

    Client *add(int socket, double now);
    void remove(Client *client);

    /// The request is whole: the client waits for us.
    void setOurTurn(Client &client);
    void setTheirTurn(Client &client, double now);

    /// Hangs up on those that have owed us something since before that moment.
    void hangUp(double before);

private:
    std::mutex mutex_;
    std::list<Client> clients_; // their addresses stay
};

} // namespace skyflare
