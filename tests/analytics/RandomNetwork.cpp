#include "tests/analytics/RandomNetwork.h"

#include "analytics/proto/BatchMessage.h"
#include "analytics/proto/BundleMessage.h"
#include "analytics/store/Gzip.h"

#include <doctest/doctest.h>

#include <algorithm>

namespace skyflare {

namespace {

/// Null: there is none of that name.
template <typename Named> const APMValue *valueOf(const std::vector<Named> &all, std::string_view name)
{
    const auto found = std::ranges::find(all, name, &Named::name);
    return found == all.end() ? nullptr : &found->value;
}

} // namespace

RandomNetwork::Outcome RandomNetwork::outcome()
{
    if (isGood)
        return {true, 200};
    static constexpr Outcome outcomes[] = {
        {true, 200},           {true, 200},      {true, 200},  {true, 204},  {true, 500},
        {true, isUnreachable}, {true, isSilent}, {false, 400}, {false, 500}, {false, isUnreachable},
        {false, isSilent},     {false, 503}};
    return outcomes[random_.below(std::size(outcomes))];
}

void RandomNetwork::takeBundle(const std::string &key, APMMeasurementBundle bundle)
{
    CHECK(bundle.appId == "1:2:linux:3");
    REQUIRE_FALSE(bundle.events.empty());
    const auto [known, isNew] = bundles_.try_emplace(key, bundle);
    duplicates += isNew ? 0 : 1;
    CHECK(BundleMessage::encode(known->second) == BundleMessage::encode(bundle)); // no NaN is the same
    // What its events have in common: the user's mood when they were logged.
    const APMValue *const mood = valueOf(bundle.metadata.userAttributes, "mood");
    std::int64_t last = -1;
    for (const APMEvent &event : bundle.events) {
        const APMValue *const number = valueOf(event.parameters, "number");
        if (!number)
            continue;
        CHECK(*valueOf(event.parameters, "mood") == (mood ? *mood : APMValue(std::string())));
        CHECK(*number->integer() > std::exchange(last, *number->integer()));
        CHECK(numbers.insert(last).second == isNew);
    }
}

std::set<std::string> RandomNetwork::take(const HttpRequest &request, bool isTaken)
{
    CHECK(request.url == "https://collect.example.org/a");
    const auto body = gunzip(request.body, 64'000'000);
    REQUIRE(body);
    const auto batch = BatchMessage::decode(*body);
    REQUIRE(batch);
    std::set<std::string> keys;
    for (const APMMeasurementBundle &bundle : batch->bundles) {
        const std::string key =
            bundle.metadata.app.appInstanceId + bundle.databaseId + std::to_string(bundle.index);
        CHECK(keys.insert(key).second);
        if (isTaken)
            takeBundle(key, bundle);
    }
    CHECK_FALSE(keys.empty());
    return keys;
}

std::string RandomNetwork::settings()
{
    if (isGood)
        return "{}";
    if (random_.isOne(4))
        return random_.oneOf<std::string>({"", "[]", "{", R"({"measurement.upload.max_bundles": "x"})"});
    const auto one = [this](std::string key, std::initializer_list<int> values) {
        return "\"measurement." + key + "\":" + std::to_string(random_.oneOf(values));
    };
    return "{" + one("upload.max_batch_size", {0, 300, 2'000, 65'536}) + "," +
           one("upload.max_events_per_bundle", {1, 2, 1'000}) + "," + one("upload.max_bundles", {1, 2, 100}) +
           "," + one("upload.max_bundles_created_per_iteration", {1, 100}) + "," +
           one("upload.interval", {15, 3'600}) + "," + one("upload.retry_time", {60, 1'800}) + "," +
           one("upload.retry_count", {1, 6}) + "," + one("upload.backoff_period", {3'600, 43'200}) + "," +
           one("upload.max_queue_time", {604'800, 2'419'200}) + "," +
           one("upload.max_events_per_day", {20, 100'000, 100'000}) + "," +
           one("store.max_stored_events_per_app", {5, 100'000, 100'000}) + "," +
           one("config.cache_time", {60, 3'600}) + "}";
}

void RandomNetwork::answerLater(std::shared_ptr<PendingAnswer> answer, const HttpRequest &request, int status,
                                std::string body)
{
    const auto delay = status == isSilent ? std::chrono::nanoseconds(request.timeLimit)
                                          : std::chrono::nanoseconds(random_.below(20'000'000'000));
    Result<HttpResponse> said = HttpResponse{.status = status, .body = {body.begin(), body.end()}};
    if (status <= 0)
        said = httpError(status == isSilent ? HttpFailure::TimedOut : HttpFailure::Unreachable, "no way");
    const bool isUpload = request.method == HttpRequest::Method::Post;
    time_.mainQueue().asyncAfter(delay, [this, answer, said, isUpload, life = life_] {
        if (life != life_)
            return;
        if (isUpload && said && said->status < 300)
            for (const std::string &key : inFlight_)
                acknowledged += bundles_.at(key).events.size();
        if (isUpload)
            inFlight_.clear();
        answer->deliver(said);
    });
}

std::unique_ptr<HttpTask> RandomNetwork::send(HttpRequest request, DispatchQueue &queue,
                                              Completion completion)
{
    auto task = std::make_unique<Task>();
    if (isDead_)
        return task;
    const auto answer = std::make_shared<PendingAnswer>(queue, std::move(completion));
    if (request.method == HttpRequest::Method::Get) {
        answerLater(answer, request,
                    isGood ? 200 : random_.oneOf({200, 200, 200, 404, isUnreachable, isSilent}), settings());
        return task;
    }
    CHECK(inFlight_.empty());
    const auto [isTaken, status] = outcome();
    inFlight_ = take(request, isTaken);
    answerLater(answer, request, status);
    if (const auto hook = std::exchange(atUpload, {}))
        hook();
    return task;
}

} // namespace skyflare
