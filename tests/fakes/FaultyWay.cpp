#include "tests/fakes/FaultyWay.h"

#include "tests/fakes/RawClient.h"

#include <utility>

namespace skyflare {

namespace {

std::string bytesOf(const HttpServer::Request &request)
{
    std::string bytes = request.method + " " + request.path + " HTTP/1.1\r\n";
    for (const auto &[name, value] : request.headers)
        bytes.append(name).append(": ").append(value).append("\r\n");
    return bytes + "\r\n" + request.body;
}

} // namespace

FaultyWay::FaultyWay(Hooks hooks)
    : hooks_(std::move(hooks)),
      server_([this](const HttpServer::Request &request) { return pass(request); },
              HttpServer::Begins::Refusing)
{
}

HttpServer::Answer FaultyWay::pass(const HttpServer::Request &request) const
{
    static const HttpServer::Answer broken{.bytes = {}, .then = HttpServer::Then::Reset};
    const bool isUpload = request.method == "POST";
    const auto reached = [&](Stage stage) {
        if (isUpload)
            hooks_.reached(stage);
    };
    const Fault fault = isUpload ? hooks_.fault() : Fault::None;
    reached(Stage::Arrived);
    if (fault == Fault::Reset)
        return broken;
    if (fault == Fault::Silence)
        return {.bytes = {}, .then = HttpServer::Then::StayOpen};
    if (fault == Fault::ServerError)
        return HttpServer::answer(500, "");

    RawClient collector(collectorPort_);
    const std::string bytes = bytesOf(request);
    const std::size_t middle = bytes.size() - request.body.size() / 2;
    collector.send(std::string_view(bytes).substr(0, middle));
    reached(Stage::HalfSent);
    if (fault == Fault::CutRequest) {
        collector.reset();
        return broken;
    }
    collector.send(std::string_view(bytes).substr(middle));
    reached(Stage::Sent);
    const int status = collector.readStatus();
    reached(Stage::Answered);
    if (status == 0 || fault == Fault::LostAnswer)
        return broken;
    auto answer =
        HttpServer::answer(status == 200 && fault == Fault::NoContent ? 204 : status, collector.body());
    answer.drip = std::chrono::milliseconds(fault == Fault::Drip ? 5 : 0);
    return answer;
}

} // namespace skyflare
