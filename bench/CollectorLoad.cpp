#include "bench/CollectorLoad.h"

#include "analytics/proto/BundleMessage.h"
#include "bench/Machine.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <cstring>

namespace skyflare::bench {

namespace {

/// A bundle's index as the last field of its message, which takes the place of any before. Indexes from
/// `firstIndex` on have six bytes, so that no length changes.
constexpr std::uint64_t firstIndex = std::uint64_t{1} << 35U;
constexpr std::size_t indexFieldSize = 7;

std::array<std::uint8_t, indexFieldSize> indexField(std::uint64_t index)
{
    std::array<std::uint8_t, indexFieldSize> field{0x10};
    for (std::size_t i = 1; i < indexFieldSize; ++i, index >>= 7U)
        field.at(i) = static_cast<std::uint8_t>((index & 0x7FU) | (i + 1 < indexFieldSize ? 0x80U : 0U));
    return field;
}

void appendLittleEndian(Bytes &bytes, std::uint64_t number, int count)
{
    for (int i = 0; i < count; ++i, number >>= 8U)
        bytes.push_back(static_cast<std::uint8_t>(number));
}

/// A batch of one bundle, but for the bundle's index.
Bytes batchWithoutIndex(int phone)
{
    APMMeasurementBundle bundle{
        .appId = "1:1234567890:linux:321abc456def7890",
        .databaseId = "3f2a9c0d5b7e4f18a6c1d2e3f4a5b6c7",
        .startTimestamp = 1.7e9,
        .endTimestamp = 1.7e9 + CollectorLoad::eventsABatch,
        .previousEndTimestamp = 1.7e9,
        .events = {},
        .metadata = {{{"_fot", "auto", 1.7e9, APMValue(std::int64_t{1700000000000})},
                      {"sensitivity", "app", 1.7e9, APMValue(std::string("ultra_high"))}},
                     {"1:1234567890:linux:321abc456def7890",
                      "0123456789abcdef0123456789abcd" + std::to_string(phone + 10), "0.1.0", "linux",
                      "Debian GNU/Linux 12", "Pine64 PinePhone", "de-CH"}}};
    for (int i = 0; i < CollectorLoad::eventsABatch; ++i)
        bundle.events.push_back({"app",
                                 "catch_photo",
                                 1.7e9 + i + 0.125 * (i % 8),
                                 1.7e9 + i - 1,
                                 {{"light_power", APMValue(0.4375 + 0.001 * i)},
                                  {"sensitivity", APMValue(std::string("Ultra High"))},
                                  {"frequency", APMValue(std::int64_t{5})},
                                  {"timestamp", APMValue(std::string("2023-11-14 22:13:20.000"))},
                                  {"number", APMValue(std::int64_t{i})}}});
    const Bytes encoded = BundleMessage::encode(bundle);
    Bytes batch{0x0a};
    for (std::size_t length = encoded.size() + indexFieldSize; length > 0; length >>= 7U)
        batch.push_back(static_cast<std::uint8_t>((length & 0x7FU) | (length > 0x7F ? 0x80U : 0U)));
    batch.insert(batch.end(), encoded.begin(), encoded.end());
    return batch;
}

/// A gzip stream up to where its last block begins, at a whole byte.
Bytes gzipWithoutEnd(const Bytes &plain)
{
    constexpr int gzipWindow = 15 + 16;
    z_stream stream{};
    require(deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY) ==
                Z_OK,
            "nothing can be compressed");
    Bytes packed(deflateBound(&stream, plain.size()) + 64);
    stream.next_in = const_cast<Bytef *>(plain.data());
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    require(deflate(&stream, Z_SYNC_FLUSH) == Z_OK && stream.avail_in == 0, "the batch was not compressed");
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// The end of the stream: the index in a stored block, the checksum and the length of all.
void appendEnd(Bytes &packed, const Bytes &plain, uLong plainChecksum, std::uint64_t index)
{
    const auto field = indexField(index);
    packed.push_back(1);
    appendLittleEndian(packed, indexFieldSize, 2);
    appendLittleEndian(packed, ~indexFieldSize, 2);
    packed.insert(packed.end(), field.begin(), field.end());
    appendLittleEndian(packed, crc32(plainChecksum, field.data(), field.size()), 4);
    appendLittleEndian(packed, plain.size() + field.size(), 4);
}

int connectTo(int port)
{
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0,
            "the collector cannot be reached");
    return connection;
}

void sendAll(int connection, const Bytes &bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        require(count > 0, "the collector hung up");
        sent += static_cast<std::size_t>(count);
    }
}

/// An answer has no body.
void readAnswer(int connection)
{
    std::string answer;
    while (answer.find("\r\n\r\n") == std::string::npos) {
        std::array<char, 1024> block{};
        const ssize_t count = recv(connection, block.data(), block.size(), 0);
        require(count > 0, "the collector hung up instead of answering");
        answer.append(block.data(), static_cast<std::size_t>(count));
    }
    require(answer.starts_with("HTTP/1.1 200"), answer.c_str());
}

} // namespace

CollectorLoad::CollectorLoad(int port) : port_(port)
{
    std::vector<Bytes> batches;
    for (int phone = 0; phone < phones; ++phone)
        batches.push_back(batchWithoutIndex(phone));
    bytesABatch_ = gzipWithoutEnd(batches[0]).size();
    for (const Bytes &batch : batches)
        threads_.emplace_back([this, batch] { send(batch); });
}

CollectorLoad::~CollectorLoad()
{
    isEnding_ = true;
    for (std::thread &thread : threads_)
        thread.join();
}

void CollectorLoad::send(const Bytes &plain)
{
    const Bytes packed = gzipWithoutEnd(plain);
    const uLong checksum = crc32(crc32(0, nullptr, 0), plain.data(), static_cast<uInt>(plain.size()));
    const int connection = connectTo(port_);
    Bytes request;
    for (std::uint64_t index = firstIndex; !isEnding_; ++index) {
        constexpr std::size_t endBytes = 5 + indexFieldSize + 8;
        const std::string head =
            "POST /a HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/x-protobuf\r\n"
            "Content-Encoding: gzip\r\nContent-Length: " +
            std::to_string(packed.size() + endBytes) + "\r\n\r\n";
        request.assign(head.begin(), head.end());
        request.insert(request.end(), packed.begin(), packed.end());
        appendEnd(request, plain, checksum, index);
        sendAll(connection, request);
        readAnswer(connection);
        ++batches_;
    }
    close(connection);
}

} // namespace skyflare::bench
