#pragma once

namespace skyflare {

/// An amount of red, green and blue light; 1 is the brightest that a screen shows, more burns out to white.
struct LightColor {
    float red = 0;
    float green = 0;
    float blue = 0;

    friend constexpr LightColor operator*(LightColor color, float factor)
    {
        return {color.red * factor, color.green * factor, color.blue * factor};
    }
    friend constexpr LightColor operator+(LightColor a, LightColor b)
    {
        return {a.red + b.red, a.green + b.green, a.blue + b.blue};
    }
};

/// `a` where `share` is 0, `b` where it is 1.
constexpr LightColor mixed(LightColor a, LightColor b, float share)
{
    return a * (1.0F - share) + b * share;
}

} // namespace skyflare
