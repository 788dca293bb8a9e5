#include "platform/net/CurlLoop.h"

#include <pthread.h>

#include <climits>
#include <csignal>
#include <utility>

namespace skyflare {

namespace {

Error cancelled()
{
    return httpError(HttpFailure::Cancelled, "the program ends");
}

void prepareThisThread()
{
    pthread_setname_np(pthread_self(), "http");
    // A library below libcurl may write to a connection that the other side has closed.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    curl_global_init(CURL_GLOBAL_DEFAULT); // once in a process; it takes milliseconds
}

} // namespace

CurlLoop::CurlLoop(std::filesystem::path certificateAuthorities)
    : certificateAuthorities_(std::move(certificateAuthorities))
{
}

CurlLoop::~CurlLoop()
{
    close();
}

std::uint64_t CurlLoop::add(HttpRequest request, std::shared_ptr<PendingAnswer> answer)
{
    const std::scoped_lock lock(mutex_);
    const std::uint64_t number = nextNumber_++;
    if (closed_) {
        answer->deliver(cancelled());
        return number;
    }
    added_.push_back({number, std::move(request), std::move(answer)});
    if (isServed_) {
        wakeUp();
    } else {
        if (thread_.joinable())
            thread_.join(); // it has failed, and has nothing left to do
        isServed_ = true;
        thread_ = std::thread([this] { run(); });
    }
    return number;
}

void CurlLoop::remove(std::uint64_t number)
{
    const std::scoped_lock lock(mutex_);
    if (!isServed_)
        return;
    removed_.push_back(number);
    wakeUp();
}

void CurlLoop::close()
{
    {
        const std::scoped_lock lock(mutex_);
        closed_ = true;
        wakeUp();
    }
    if (thread_.joinable())
        thread_.join();
}

// With mutex_ held.
void CurlLoop::wakeUp()
{
    if (multi_)
        curl_multi_wakeup(multi_.get());
}

void CurlLoop::run()
{
    prepareThisThread();
    if (!openMulti())
        return;
    Error why = cancelled();
    while (takeOrders()) {
        int count = 0;
        CURLMcode state = curl_multi_perform(multi_.get(), &count);
        finishEnded();
        if (state == CURLM_OK)
            state = curl_multi_poll(multi_.get(), nullptr, 0, INT_MAX, nullptr);
        if (state != CURLM_OK) {
            why = httpError(HttpFailure::Unreachable, curl_multi_strerror(state));
            break;
        }
    }
    end(why);
}

bool CurlLoop::openMulti()
{
    {
        const std::scoped_lock lock(mutex_);
        multi_.reset(curl_multi_init());
        // Without file descriptors it could not be woken up.
        if (multi_ && curl_multi_wakeup(multi_.get()) == CURLM_OK)
            return true;
    }
    end(httpError(HttpFailure::Unreachable, "there is nothing left to connect with"));
    return false;
}

/// False once the loop is closed.
bool CurlLoop::takeOrders()
{
    std::vector<Order> added;
    std::vector<std::uint64_t> removed;
    {
        const std::scoped_lock lock(mutex_);
        if (closed_)
            return false;
        added = std::exchange(added_, {});
        removed = std::exchange(removed_, {});
    }
    for (Order &order : added)
        start(std::move(order));
    for (const std::uint64_t number : removed) {
        const auto found = running_.find(number);
        if (found == running_.end())
            continue;
        curl_multi_remove_handle(multi_.get(), found->second.transfer->easy());
        running_.erase(found);
    }
    return true;
}

void CurlLoop::start(Order order)
{
    auto transfer = CurlTransfer::make(std::move(order.request), certificateAuthorities_);
    if (!transfer) {
        order.answer->deliver(transfer.error());
        return;
    }
    CURL *const easy = (*transfer)->easy();
    const auto place =
        running_.emplace(order.number, Running{std::move(*transfer), std::move(order.answer)}).first;
    // A map's nodes stay where they are.
    curl_easy_setopt(easy, CURLOPT_PRIVATE, static_cast<void *>(&*place));
    if (const auto state = curl_multi_add_handle(multi_.get(), easy); state != CURLM_OK) {
        place->second.answer->deliver(httpError(HttpFailure::Unreachable, curl_multi_strerror(state)));
        running_.erase(place);
    }
}

void CurlLoop::finishEnded()
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        CURL *const easy = message->easy_handle;
        std::pair<const std::uint64_t, Running> *place = nullptr;
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &place);
        curl_multi_remove_handle(multi_.get(), easy);
        place->second.answer->deliver(place->second.transfer->finish(code));
        running_.erase(place->first);
    }
}

/// Answers everything with `why`. A request that comes after it begins a new thread.
void CurlLoop::end(const Error &why)
{
    for (auto &[number, running] : running_) {
        curl_multi_remove_handle(multi_.get(), running.transfer->easy());
        running.answer->deliver(why);
    }
    running_.clear();
    const std::scoped_lock lock(mutex_);
    for (const Order &order : std::exchange(added_, {}))
        order.answer->deliver(why);
    removed_.clear();
    multi_.reset();
    isServed_ = false;
}

} // namespace skyflare
