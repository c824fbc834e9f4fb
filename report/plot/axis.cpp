#include "report/plot/axis.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace report {

namespace {

constexpr int kMostDecimals = 17;
constexpr std::size_t kMostLabels = 5;

// "1.50e+06" as "1.5e6".
std::string shortExponent(std::string text) {
    const std::size_t e = text.find('e');
    if (e == std::string::npos) return text;
    std::string mantissa = text.substr(0, e);
    if (mantissa.find('.') != std::string::npos) {
        mantissa.erase(mantissa.find_last_not_of('0') + 1);
        if (mantissa.back() == '.') mantissa.pop_back();
    }
    const int exponent = std::stoi(text.substr(e + 1));
    return fmt::format("{}e{}", mantissa, exponent);
}

// The round number at or above: 1, 2 or 5 times a power of ten.
double roundStep(double step) {
    const double power = std::pow(10.0, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * power >= step * (1.0 - 1e-9)) return factor * power;
    return 10.0 * power;
}

// A tick's number, with the digits that tell it from its neighbours.
std::string tickText(double number, double step, double greatest) {
    constexpr double kLeastPlain = 1e-4;
    constexpr double kMostPlain = 1e6;
    if (std::abs(number) < step / 2) return "0";
    const auto digitsBelow = [&](double unit) {
        return std::clamp(static_cast<int>(std::ceil(-std::log10(step / unit) - 1e-9)), 0, kMostDecimals);
    };
    if (greatest >= kMostPlain * (1 + 1e-9) || greatest < kLeastPlain) {
        const double unit = std::pow(10.0, std::floor(std::log10(std::abs(number)) + 1e-12));
        constexpr int kMostDigits = 3;
        constexpr double kNeverPlain = 1e12;
        const bool isShort = unit > 0 && digitsBelow(unit) <= kMostDigits;
        if (isShort || greatest >= kNeverPlain || greatest < kLeastPlain)
            return shortExponent(fmt::format("{:.{}e}", number, digitsBelow(unit)));
    }
    return fmt::format("{:.{}f}", number, digitsBelow(1.0));
}

// Two labels where no round numbers can be told apart.
ValueAxis plainAxis(double least, double greatest) {
    return {least, greatest, {fmt::format("{}", least), fmt::format("{}", greatest)}};
}

struct Unit {
    double seconds;
    double leastSpan;
    const char* name;
};
constexpr std::array<Unit, 7> kUnits{{{86400.0, 3 * 86400.0, "d"},
                                      {3600.0, 3 * 3600.0, "h"},
                                      {60.0, 600.0, "min"},
                                      {1.0, 0.5, "s"},
                                      {1e-3, 5e-4, "ms"},
                                      {1e-6, 5e-7, "µs"},
                                      {1e-9, 0.0, "ns"}}};

const Unit& unitFor(double span) {
    return *std::find_if(kUnits.begin(), kUnits.end() - 1, [&](const Unit& unit) { return span >= unit.leastSpan; });
}

std::vector<Tick> ticksOf(double from, double to, const Unit& unit, double step) {
    const double greatest = std::max(std::abs(from), std::abs(to)) / unit.seconds;
    std::vector<Tick> ticks;
    const double first = std::ceil(from / unit.seconds / step - 1e-9);
    for (int i = 0; i < 2 * static_cast<int>(kMostLabels) + 2; ++i) {
        const double number = (first + i) * step;
        if (number * unit.seconds > to + step * unit.seconds * 1e-6) break;
        ticks.push_back({shareOf(number * unit.seconds, from, to), tickText(number, step, greatest)});
    }
    return ticks;
}

// Whether the labels stand apart in a narrow plot, the unit behind the last one as well. In pixels.
bool hasRoom(const std::vector<Tick>& ticks, const char* unit) {
    constexpr double kNarrow = 270.0;
    constexpr double kCharacter = 6.7;
    constexpr double kGap = 5.0;
    if (ticks.size() < 2) return true;
    std::size_t longest = 0;
    for (const Tick& tick : ticks) longest = std::max(longest, tick.text.size());
    const double label = static_cast<double>(longest) * kCharacter;
    const double last = label + static_cast<double>(1 + std::char_traits<char>::length(unit)) * kCharacter;
    const double apart = (ticks[1].at - ticks[0].at) * kNarrow;
    return label + 2 * kGap <= apart && last + label / 2 + kGap <= apart;
}

}  // namespace

std::string numberText(double number) {
    constexpr double kMostPlain = 1e6;
    if (std::isnan(number)) return "NaN";
    if (std::isinf(number)) return number > 0 ? "∞" : "-∞";
    if (std::abs(number) < kMostPlain && number == std::floor(number)) return fmt::format("{:.0f}", number + 0.0);
    return shortExponent(fmt::format("{:.6g}", number));
}

double shareOf(double number, double from, double to) noexcept {
    const double span = to / 2 - from / 2;
    return span > 0 ? std::clamp((number / 2 - from / 2) / span, 0.0, 1.0) : 0.5;
}

ValueAxis valueAxis(double least, double greatest, bool isWhole) {
    if (least == greatest) {
        const double room = isWhole ? 1.0 : least == 0.0 ? 1.0 : std::abs(least) / 10;
        return std::isfinite(2 * greatest) && least - room < least ? valueAxis(least - room, greatest + room, isWhole)
                                                                   : plainAxis(least, greatest);
    }
    const double span = greatest - least;
    if (!std::isfinite(span) || span < std::numeric_limits<double>::min()) return plainAxis(least, greatest);
    double step = roundStep(span / static_cast<double>(kMostLabels - 1));
    if (isWhole) step = std::max(step, 1.0);
    const double first = std::floor(least / step + 1e-9);
    const double last = std::max(std::ceil(greatest / step - 1e-9), first + 1);
    const double scale = std::max(std::abs(least), std::abs(greatest));
    if (!std::isfinite(last * step) || !std::isfinite(first * step) || step < scale * 1e-14)
        return plainAxis(least, greatest);
    ValueAxis axis{std::min(first * step, least), std::max(last * step, greatest), {}};
    for (double i = first; i <= last; ++i) axis.labels.push_back(tickText(i * step, step, scale));
    return axis;
}

TimeAxis timeAxis(double from, double to) {
    if (!(from < to)) {
        const double room = std::max(0.5, std::abs(from) * 1e-12);
        from -= room;
        to = from + 2 * room;
    }
    TimeAxis axis{from, to, {}};
    const double span = to - from;
    const Unit& unit = unitFor(span);
    if (!std::isfinite(span)) return axis;
    for (std::size_t count = kMostLabels + 1; count >= 1; --count) {
        axis.ticks = ticksOf(from, to, unit, roundStep(span / unit.seconds / static_cast<double>(count)));
        if (hasRoom(axis.ticks, unit.name)) break;
    }
    if (!axis.ticks.empty()) axis.ticks.back().text += fmt::format(" {}", unit.name);
    return axis;
}

std::string durationText(double seconds) {
    if (seconds == 0.0) return "0 s";
    const Unit& unit = unitFor(std::abs(seconds));
    return fmt::format("{} {}", numberText(seconds / unit.seconds), unit.name);
}

}  // namespace report
