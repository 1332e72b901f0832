#include "ValueParse.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace ostrel::widgets
{
namespace
{
// Case, blanks and the typographic minus don't count when texts are compared.
juce::String normalised(const juce::String& text)
{
    return text.replace(juce::String(juce::CharPointer_UTF8("\xe2\x88\x92")), "-")
        .removeCharacters(juce::String(" \t") + juce::String(juce::CharPointer_UTF8("\xc2\xa0")))
        .toLowerCase();
}

struct Unit
{
    const char* text;
    const char* family;
    double factor;
};

const Unit units[] = {
    { "", "", 1.0 },        { "%", "%", 0.01 },      { "ms", "s", 0.001 },     { "s", "s", 1.0 },
    { "sec", "s", 1.0 },    { "hz", "hz", 1.0 },     { "khz", "hz", 1000.0 },  { "k", "hz", 1000.0 },
    { "db", "db", 1.0 },    { "st", "st", 1.0 },     { "semi", "st", 1.0 },    { "semis", "st", 1.0 },
    { "ct", "ct", 1.0 },    { "c", "ct", 1.0 },      { "cent", "ct", 1.0 },    { "cents", "ct", 1.0 },
    { "deg", "deg", 1.0 },  { "b", "bits", 1.0 },    { "bit", "bits", 1.0 },   { "bits", "bits", 1.0 },
    { "x", "x", 1.0 },
};

struct Sample
{
    double value;
    juce::String text;
    std::optional<TypedQuantity> quantity;
};

double quantityOf(const TypedQuantity& q) { return q.value; }
} // namespace

std::optional<TypedQuantity> readQuantity(const juce::String& input)
{
    auto text = normalised(input).replace(juce::String(juce::CharPointer_UTF8("\xc2\xb0")), "deg");
    if (text.isEmpty())
        return std::nullopt;

    double number = 0.0;
    juce::String rest;
    const auto infinity = juce::String(juce::CharPointer_UTF8("\xe2\x88\x9e"));
    for (const char* word : { "inf", "-inf", "+inf" })
        if (text.startsWith(word) && ! text.startsWith(juce::String(word) + "i"))
            text = text.replace("inf", infinity);
    if (text.startsWith(infinity) || text.startsWith("-" + infinity) || text.startsWith("+" + infinity))
    {
        number = text.startsWithChar('-') ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
        rest = text.fromFirstOccurrenceOf(infinity, false, false);
    }
    else
    {
        const auto chars = text.toStdString();
        if (chars.find_first_of("0123456789") == std::string::npos || chars.find("0x") != std::string::npos)
            return std::nullopt; // strtod would take "inf", "nan" and hex
        char* stop = nullptr;
        number = std::strtod(chars.c_str(), &stop);
        if (stop == chars.c_str() || std::isnan(number))
            return std::nullopt;
        rest = juce::String(stop);
    }

    for (const auto& unit : units)
        if (rest == unit.text)
            return TypedQuantity { number * unit.factor, unit.family, unit.factor };
    return std::nullopt;
}

std::optional<double> parseDisplayedValue(const juce::String& text, juce::Slider& slider,
                                          const std::function<juce::String(double)>& formatIn)
{
    const auto format = formatIn ? formatIn : [](double v) { return juce::String(v, 2); };
    const double lo = slider.getMinimum(), hi = slider.getMaximum();
    const auto typed = normalised(text);
    if (typed.isEmpty())
        return std::nullopt;
    if (hi <= lo)
        return lo;
    const double current = slider.getValue();
    if (typed == normalised(format(current)))
        return current;

    const double interval = slider.getInterval();
    auto snap = [&](double v) {
        v = juce::jlimit(lo, hi, v);
        return interval > 0.0 ? juce::jlimit(lo, hi, lo + std::round((v - lo) / interval) * interval) : v;
    };

    // The display's own texts across the range: the legal values of a stepped range, else
    // points spread along the slider's own (possibly skewed) length.
    std::vector<Sample> samples;
    const bool stepped = interval > 0.0 && (hi - lo) / interval <= 512.0;
    const int count = stepped ? (int) std::round((hi - lo) / interval) + 1 : 257;
    for (int i = 0; i < count; ++i)
    {
        const double v = stepped ? snap(lo + i * interval) : slider.proportionOfLengthToValue((double) i / (count - 1));
        const auto shown = format(v);
        samples.push_back({ v, normalised(shown), readQuantity(shown) });
    }

    auto byName = [&]() -> std::optional<double> {
        for (size_t i = 0; i < samples.size(); ++i)
        {
            if (samples[i].text != typed)
                continue;
            size_t last = i;
            while (last + 1 < samples.size() && samples[last + 1].text == typed)
                ++last;
            // A name that covers a stretch of a continuous range stands for its middle.
            return stepped ? samples[i].value : snap(0.5 * (samples[i].value + samples[last].value));
        }
        return std::nullopt;
    };

    auto quantity = readQuantity(text);
    if (! quantity)
        return byName();

    const bool bare = quantity->family.isEmpty();
    if (bare)
    {
        // A bare number is read in the unit that is shown now.
        auto shownNow = readQuantity(format(current));
        if (! shownNow)
            for (const auto& s : samples)
                if (s.quantity)
                {
                    shownNow = s.quantity;
                    break;
                }
        if (! shownNow)
            return byName();
        quantity = TypedQuantity { quantity->value * shownNow->factor, shownNow->family, shownNow->factor };
    }
    std::vector<const Sample*> points;
    for (const auto& s : samples)
        if (s.quantity && s.quantity->family == quantity->family && std::isfinite(quantityOf(*s.quantity)))
            points.push_back(&s);
    if (points.empty())
        return byName();
    double target = quantity->value;
    if (std::isinf(target))
    {
        // Infinity is a value only where the display shows it (a level's floor): that end it is.
        for (const auto& s : samples)
            if (s.quantity && s.quantity->family == quantity->family && s.quantity->value == target)
                return snap(s.value);
        return std::nullopt;
    }

    const Sample* low = points.front();
    const Sample* high = points.front();
    for (const auto* p : points)
    {
        if (p->quantity->value < low->quantity->value)
            low = p;
        if (p->quantity->value > high->quantity->value)
            high = p;
    }
    if (bare && (target < low->quantity->value || target > high->quantity->value))
    {
        // A display that changes unit along its range ("950 Hz", "1.2 kHz"): a bare number that
        // lies outside the range in the unit on show is read in another unit the display uses.
        for (const auto* p : points)
        {
            const auto other = readQuantity(format(p->value));
            const double inOther = target / quantity->factor * other->factor;
            if (inOther >= low->quantity->value && inOther <= high->quantity->value)
            {
                target = inOther;
                break;
            }
        }
    }
    // Beyond what the display reaches: the end of the range on that side.
    auto rangeEnd = [&](double v) { return std::abs(v - lo) <= std::abs(v - hi) ? lo : hi; };
    if (target <= low->quantity->value)
        return snap(target < low->quantity->value ? rangeEnd(low->value) : low->value);
    if (target >= high->quantity->value)
        return snap(target > high->quantity->value ? rangeEnd(high->value) : high->value);

    // Most displays are the value itself in some unit (or a straight scaling of it): then the
    // typed number is exact.
    // A point where the display rounds across one of its own thresholds (-59.48 shows as
    // "-59.5 dB", -59.5 as "-inf dB") may miss; a handful of such points doesn't break the rule.
    auto fits = [&](double a, double b) {
        size_t misses = 0;
        for (const auto* p : points)
        {
            const double q = p->quantity->value;
            const auto back = readQuantity(format(snap(a * q + b)));
            if (! back || back->family != quantity->family || std::abs(back->value - q) > 1e-9 * std::max(1.0, std::abs(q)))
                ++misses;
        }
        return misses <= std::max<size_t>(1, points.size() / 64);
    };
    if (fits(1.0, 0.0))
        return snap(target);
    const double a = (high->value - low->value) / (high->quantity->value - low->quantity->value);
    const double b = low->value - a * low->quantity->value;
    if (fits(a, b))
        return snap(a * target + b);

    // Otherwise walk the display: find the stretch where it passes the target and halve it.
    auto shownQuantity = [&](double proportion) {
        const auto q = readQuantity(format(slider.proportionOfLengthToValue(proportion)));
        return q && q->family == quantity->family ? q->value : std::numeric_limits<double>::quiet_NaN();
    };
    double pLow = slider.valueToProportionOfLength(low->value);
    double pHigh = slider.valueToProportionOfLength(high->value);
    for (int i = 0; i < 48; ++i)
    {
        const double mid = 0.5 * (pLow + pHigh);
        const double q = shownQuantity(mid);
        if (std::isnan(q))
            break;
        (q < target ? pLow : pHigh) = mid;
    }
    return snap(slider.proportionOfLengthToValue(0.5 * (pLow + pHigh)));
}

std::optional<double> parseValueFor(const juce::String& text, juce::Slider& slider,
                                    const std::function<juce::String(double)>& format)
{
    const auto parsed = parseDisplayedValue(text, slider, format);
    if (! parsed.has_value() || ! std::isfinite(*parsed))
        return std::nullopt;
    return juce::jlimit(slider.getMinimum(), slider.getMaximum(), *parsed);
}

bool applyTypedValue(juce::Slider& slider, std::optional<double> value)
{
    if (! value.has_value())
        return false;
    if (*value != slider.getValue())
    {
        const juce::Slider::ScopedDragNotification gesture(slider);
        slider.setValue(*value, juce::sendNotificationSync);
    }
    return true;
}

} // namespace ostrel::widgets
