#include "platform/camera/SimulatedSkySource.h"

#include "platform/camera/GstSetup.h"
#include "platform/camera/SkyElement.h"

#include <charconv>
#include <optional>

namespace skyflare {

namespace {

constexpr std::string_view name = "simulated";
constexpr std::string_view seedKey = "seed=";

/// The whole of `text` as a number, or nothing.
template <typename Number> std::optional<Number> numberFrom(std::string_view text)
{
    Number number{};
    const char *const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc() || stop != end)
        return std::nullopt;
    return number;
}

/// What stands before `mark`, which is taken off `text` with it; all of it where there is no mark.
std::string_view takeUpTo(std::string_view &text, char mark)
{
    const std::size_t end = text.find(mark);
    const std::string_view taken = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return taken;
}

bool isSide(std::optional<int> side)
{
    return side && *side >= SkyParameters::smallestSide && *side <= SkyParameters::largestSide;
}

/// Reads "1280x720" into `parameters`, or says what a size should be.
std::optional<std::string> readSize(std::string_view text, SkyParameters &parameters)
{
    const auto width = numberFrom<int>(takeUpTo(text, 'x'));
    const auto height = numberFrom<int>(text);
    if (!isSide(width) || !isSide(height))
        return "a size is WIDTHxHEIGHT, each from " + std::to_string(SkyParameters::smallestSide) + " to " +
               std::to_string(SkyParameters::largestSide) + " pixels";
    parameters.width = *width;
    parameters.height = *height;
    return std::nullopt;
}

std::optional<std::string> readRate(std::string_view text, SkyParameters &parameters)
{
    const auto rate = numberFrom<double>(text);
    if (!rate || !(*rate >= SkyParameters::slowestRate && *rate <= SkyParameters::fastestRate))
        return "a rate is @FRAMES a second, from " + std::to_string(int(SkyParameters::slowestRate)) +
               " to " + std::to_string(int(SkyParameters::fastestRate));
    parameters.framesPerSecond = *rate;
    return std::nullopt;
}

/// Reads one of the parts between commas.
std::optional<std::string> readPart(std::string_view part, SkyParameters &parameters)
{
    if (part.starts_with(seedKey)) {
        const auto seed = numberFrom<std::uint64_t>(part.substr(seedKey.size()));
        if (!seed)
            return "a seed is a whole number, 0 or more";
        parameters.seed = *seed;
        return std::nullopt;
    }
    const bool hasRate = part.find('@') != std::string_view::npos;
    const std::string_view size = takeUpTo(part, '@');
    if (!size.empty() || !hasRate) {
        if (auto wrong = readSize(size, parameters))
            return wrong;
    }
    return hasRate ? readRate(part, parameters) : std::nullopt;
}

} // namespace

Result<std::shared_ptr<SimulatedSkySource>> SimulatedSkySource::parse(std::string_view text)
{
    const auto refuse = [text](const std::string &reason) {
        return Error{"camera", 0, "\"" + std::string(text) + "\" is no simulated sky: " + reason};
    };
    std::string_view rest = text;
    if (takeUpTo(rest, ':') != name)
        return refuse("write simulated:1280x720@60,seed=7, or less of it");
    SkyParameters parameters;
    if (text != name) {
        do {
            if (const auto wrong = readPart(takeUpTo(rest, ','), parameters))
                return refuse(*wrong);
        } while (!rest.empty());
    }
    return std::make_shared<SimulatedSkySource>(parameters);
}

std::vector<CaptureFormat> SimulatedSkySource::formats() const
{
    return {{parameters_.width, parameters_.height, parameters_.framesPerSecond}};
}

Result<> SimulatedSkySource::lockForConfiguration()
{
    if (isLocked_.exchange(true))
        return Error{"camera", 0, localizedName() + " is being configured by somebody else"};
    return {};
}

Result<Element> SimulatedSkySource::makeElement() const
{
    if (const auto ready = initialiseGStreamer(); !ready)
        return ready.error();
    return makeSkyElement(parameters_);
}

} // namespace skyflare
