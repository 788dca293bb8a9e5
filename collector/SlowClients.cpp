#include "collector/SlowClients.h"

#include <sys/socket.h>

namespace skyflare {

SlowClients::Client *SlowClients::add(int socket, double now)
{
    const std::scoped_lock lock(mutex_);
    return &clients_.emplace_back(Client{socket, now, false});
}

void SlowClients::remove(Client *client)
{
    const std::scoped_lock lock(mutex_);
    clients_.remove_if([client](const Client &each) { return &each == client; });
}

void SlowClients::setOurTurn(Client &client)
{
    const std::scoped_lock lock(mutex_);
    client.isOurTurn = true;
}

void SlowClients::setTheirTurn(Client &client, double now)
{
    const std::scoped_lock lock(mutex_);
    client.isOurTurn = false;
    client.owesSince = now;
}

void SlowClients::hangUp(double before)
{
    const std::scoped_lock lock(mutex_);
    for (const Client &client : clients_) {
        if (!client.isOurTurn && client.owesSince < before)
            shutdown(client.socket, SHUT_RDWR); // whoever reads from it sees its end
    }
}

} // namespace skyflare
