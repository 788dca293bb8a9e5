#pragma once

#include <array>

namespace skyflare {

/// How a kind of shell flies apart. Lengths are shares of the scene's unit.
struct ShellKind {
    enum class Arrangement { Sphere, Ring, Palm };
    enum class Palette { Vivid, Gold, Silver };

    Arrangement arrangement;
    Palette palette;
    int stars;
    float smallest, largest; ///< radius that the stars reach
    float drag;              ///< per second: how soon the air has stopped them
    float gravity;           ///< units per second²
    float lifeSeconds;       ///< of a star
    float lifeSpread;        ///< share by which lives differ
    float trailSeconds;      ///< how long the air behind a star glows
    float strength;          ///< light of a star
    float headRadius;        ///< of a star
    float pistil;            ///< share of the stars that form a second, smaller ball
    bool goldTrail;          ///< burning charcoal behind the star, whatever its colour
    bool glitter;            ///< sparks hang in the trail
    bool crackles;           ///< the stars end in small reports
};

// clang-format off
inline constexpr std::array<ShellKind, 8> shellKinds{{
    // arrangement                    palette                     stars smallest largest drag gravity life spread trail strength head pistil gold glitter crackles
    {ShellKind::Arrangement::Sphere, ShellKind::Palette::Vivid,  185, 0.22F, 0.32F, 3.1F, 0.085F, 1.95F, 0.14F, 0.85F, 1.40F, 0.0034F, 0.00F, false, false, false}, // peony
    {ShellKind::Arrangement::Sphere, ShellKind::Palette::Vivid,  150, 0.26F, 0.36F, 2.8F, 0.070F, 2.15F, 0.10F, 1.45F, 1.25F, 0.0032F, 0.00F, true,  false, false}, // chrysanthemum
    {ShellKind::Arrangement::Sphere, ShellKind::Palette::Gold,   105, 0.27F, 0.35F, 2.5F, 0.170F, 3.40F, 0.18F, 1.40F, 1.15F, 0.0024F, 0.00F, true,  true,  false}, // willow
    {ShellKind::Arrangement::Ring,   ShellKind::Palette::Vivid,  110, 0.20F, 0.29F, 3.1F, 0.075F, 1.90F, 0.08F, 0.75F, 1.50F, 0.0036F, 0.50F, false, false, false}, // ring around a ball
    {ShellKind::Arrangement::Sphere, ShellKind::Palette::Gold,   120, 0.20F, 0.28F, 3.0F, 0.110F, 1.45F, 0.12F, 0.80F, 1.20F, 0.0030F, 0.00F, true,  false, true},  // crackle
    {ShellKind::Arrangement::Palm,   ShellKind::Palette::Gold,    22, 0.27F, 0.35F, 2.6F, 0.210F, 2.20F, 0.10F, 1.00F, 1.70F, 0.0044F, 0.00F, true,  true,  false}, // palm
    {ShellKind::Arrangement::Sphere, ShellKind::Palette::Vivid,  210, 0.23F, 0.33F, 3.0F, 0.080F, 2.00F, 0.10F, 0.80F, 1.35F, 0.0032F, 0.32F, false, false, false}, // peony with a pistil
    {ShellKind::Arrangement::Sphere, ShellKind::Palette::Silver, 130, 0.23F, 0.32F, 2.9F, 0.085F, 2.00F, 0.12F, 1.10F, 1.15F, 0.0030F, 0.00F, false, true,  true},  // silver crackle
}};
// clang-format on

} // namespace skyflare
