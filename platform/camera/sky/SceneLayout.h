#pragma once

#include <algorithm>

namespace skyflare {

/// Where things are in a picture of a given size.
struct SceneLayout {
    int width = 0;  ///< pixels
    int height = 0; ///< pixels
    float unit = 0; ///< pixels; what all sizes in the scene are a share of
    int shore = 0;  ///< the first row of the water

    SceneLayout(int pictureWidth, int pictureHeight)
        : width(pictureWidth),
          height(pictureHeight),
          unit(std::min(static_cast<float>(pictureHeight), 1.1F * static_cast<float>(pictureWidth))),
          // Even, so that the water begins with a chroma row of its own.
          shore(static_cast<int>(static_cast<float>(pictureHeight) * 0.42F) * 2)
    {
    }
};

} // namespace skyflare
