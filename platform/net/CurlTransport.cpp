#include "platform/net/CurlTransport.h"

#include "platform/net/CurlLoop.h"

#include <utility>

namespace skyflare {

namespace {

class CurlTask final : public HttpTask {
public:
    CurlTask(std::shared_ptr<CurlLoop> loop, std::uint64_t number, std::shared_ptr<PendingAnswer> answer)
        : loop_(std::move(loop)), number_(number), answer_(std::move(answer))
    {
    }
    CurlTask(const CurlTask &) = delete;
    CurlTask &operator=(const CurlTask &) = delete;
    ~CurlTask() override
    {
        answer_->cancel();
        loop_->remove(number_);
    }

private:
    const std::shared_ptr<CurlLoop> loop_;
    const std::uint64_t number_;
    const std::shared_ptr<PendingAnswer> answer_;
};

} // namespace

CurlTransport::CurlTransport(std::filesystem::path certificateAuthorities)
    : loop_(std::make_shared<CurlLoop>(std::move(certificateAuthorities)))
{
}

CurlTransport::~CurlTransport()
{
    loop_->close();
}

std::unique_ptr<HttpTask> CurlTransport::send(HttpRequest request, DispatchQueue &queue,
                                              Completion completion)
{
    auto answer = std::make_shared<PendingAnswer>(queue, std::move(completion));
    const std::uint64_t number = loop_->add(std::move(request), answer);
    return std::make_unique<CurlTask>(loop_, number, std::move(answer));
}

} // namespace skyflare
