#pragma once

#include "platform/persistence/EntityDescription.h"
#include "store/PhotoModel.h"

#include <optional>

namespace skyflare {

class ManagedObject;

/// The stored form of a photo: the entity, its attributes by key, and the model that a container is given.

inline constexpr const char *photoEntityName = "PhotoEntity";
inline constexpr const char *storageContainerName = "Storage";

namespace photoKeys {
inline constexpr const char *uuid = "uuid";               ///< String: 36 characters, upper case
inline constexpr const char *photoData = "photoData";     ///< Binary: PNG
inline constexpr const char *createdDate = "createdDate"; ///< Date: when it was saved
} // namespace photoKeys

/// The model of the container "Storage".
ManagedObjectModel storageModel();

/// The photo as the screens get it; nothing if it lacks its identity, its date or a picture that is whole.
std::optional<PhotoModel> photoModel(const ManagedObject &object);

} // namespace skyflare
