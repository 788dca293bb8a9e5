#pragma once

#include "platform/base/Bytes.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace skyflare {

/// One connection to a web server on this machine, byte by byte. Nothing that it does waits for more than
/// two minutes.
class RawClient {
public:
    explicit RawClient(int port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval patience{120, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sockaddr_in address{.sin_family = AF_INET,
                            .sin_port = htons(static_cast<std::uint16_t>(port)),
                            .sin_addr = {htonl(INADDR_LOOPBACK)},
                            .sin_zero = {}};
        isOpen_ = connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
    RawClient(const RawClient &) = delete;
    RawClient &operator=(const RawClient &) = delete;
    ~RawClient()
    {
        if (socket_ >= 0)
            close(socket_);
    }

    bool send(std::string_view bytes)
    {
        while (isOpen_ && !bytes.empty()) {
            const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            isOpen_ = sent > 0;
            bytes.remove_prefix(isOpen_ ? static_cast<std::size_t>(sent) : 0);
        }
        return isOpen_;
    }

    /// Hangs up as one that has crashed.
    void reset()
    {
        const linger atOnce{1, 0};
        setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        close(std::exchange(socket_, -1));
        isOpen_ = false;
    }

    /// The status of the next answer, which is read to the end of its body; 0: the server hung up.
    int readStatus()
    {
        std::string answer;
        char block[4096];
        for (;;) {
            if (const auto end = answer.find("\r\n\r\n"); end != std::string::npos) {
                const auto length = answer.find("Content-Length: ");
                const auto body = length < end ? std::strtoul(answer.c_str() + length + 16, nullptr, 10) : 0;
                if (answer.size() >= end + 4 + body) {
                    body_ = answer.substr(end + 4);
                    return std::atoi(answer.c_str() + 9);
                }
            }
            const ssize_t count = isOpen_ ? recv(socket_, block, sizeof block, 0) : 0;
            if (count <= 0)
                return 0;
            answer.append(block, static_cast<std::size_t>(count));
        }
    }
    [[nodiscard]] const std::string &body() const { return body_; }

    int post(const Bytes &body, const std::string &headers = {})
    {
        const std::string head = "POST /a HTTP/1.1\r\nHost: x\r\n" + headers + "Content-Length: ";
        send(head + std::to_string(body.size()) + "\r\n\r\n" + std::string(body.begin(), body.end()));
        return readStatus();
    }
    int ask(const std::string &method, const std::string &path)
    {
        send(method + " " + path + " HTTP/1.1\r\nHost: x\r\nContent-Length: 0\r\n\r\n");
        return readStatus();
    }

private:
    int socket_;
    bool isOpen_ = false;
    std::string body_;
};

} // namespace skyflare
