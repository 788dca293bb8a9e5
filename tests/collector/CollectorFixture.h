#pragma once

#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/BundleMessage.h"
#include "platform/base/Files.h"
#include "tests/fakes/ChildProcess.h"
#include "tests/fakes/TemporaryFolder.h"

#include <arpa/inet.h>
#include <doctest/doctest.h>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace skyflare {

/// One connection to a collector, byte by byte. Nothing that it does waits for more than two minutes.
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
    ~RawClient() { close(socket_); }

    bool send(std::string_view bytes)
    {
        while (isOpen_ && !bytes.empty()) {
            const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            isOpen_ = sent > 0;
            bytes.remove_prefix(isOpen_ ? static_cast<std::size_t>(sent) : 0);
        }
        return isOpen_;
    }

    /// The status of the next answer, which is read to the end of its body; 0: the collector hung up.
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

/// The built program on a folder of its own: any port, its state and "events.jsonl" in the folder.
class RunningCollector {
public:
    explicit RunningCollector(const std::filesystem::path &folder, std::vector<std::string> more = {})
        : process(command(folder, std::move(more)))
    {
        const std::string line = process.readLine().value_or("");
        const auto at = line.find(" port ");
        REQUIRE_MESSAGE(at != std::string::npos, "it does not start");
        port = std::atoi(line.c_str() + at + 6);
    }

    int post(const Bytes &batch, const std::string &headers = {}) const
    {
        return RawClient(port).post(batch, headers);
    }

    /// Ends it in order. @return what it says that it took
    std::string terminate()
    {
        process.signal(SIGTERM);
        const auto lines = process.readAll();
        CHECK(process.wait() == 0);
        return lines.empty() ? "" : lines.back();
    }

    ChildProcess process;
    int port = 0;

private:
    static std::vector<std::string> command(const std::filesystem::path &folder,
                                            std::vector<std::string> more)
    {
        more.insert(more.begin(), {SKYFLARE_COLLECTOR, "--port", "0", "--state-dir", folder.string()});
        return more;
    }
};

inline APMMeasurementBundle bundleOf(const std::string &instance, const std::string &database,
                                     std::int64_t index, int events = 1)
{
    APMMeasurementBundle bundle{.appId = "1:2:linux:3",
                                .databaseId = database,
                                .index = index,
                                .startTimestamp = 1.7e9,
                                .endTimestamp = 1.7e9,
                                .events = {},
                                .metadata = {{}, {.appId = "1:2:linux:3", .appInstanceId = instance}}};
    for (int i = 0; i < events; ++i)
        bundle.events.push_back({"app", "catch_photo", 1.7e9, 0, {{"number", APMValue(std::int64_t{i})}}});
    return bundle;
}

inline Bytes batchOf(const std::vector<APMMeasurementBundle> &bundles)
{
    std::vector<Bytes> encoded;
    encoded.reserve(bundles.size());
    for (const auto &bundle : bundles)
        encoded.push_back(BundleMessage::encode(bundle));
    return BatchMessage::encode({.uploadTimestamp = 1.7e9, .engineVersion = "0.1.0"}, encoded);
}

/// Every line of a file of events; a line that is no JSON or has no end is a failure.
inline std::vector<nlohmann::json> linesIn(const std::filesystem::path &file)
{
    const Bytes bytes = *readFile(file);
    std::string_view rest(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    std::vector<nlohmann::json> lines;
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        REQUIRE(end != std::string_view::npos);
        lines.push_back(nlohmann::json::parse(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    return lines;
}

/// "KEY#NUMBER" of every line, in the order of the file.
inline std::vector<std::string> eventsIn(const std::filesystem::path &file)
{
    std::vector<std::string> events;
    for (const auto &line : linesIn(file))
        events.push_back(line["bundle_key"].get<std::string>() + "#" +
                         std::to_string(line["event_number"].get<int>()));
    return events;
}

} // namespace skyflare
