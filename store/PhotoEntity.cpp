#include "store/PhotoEntity.h"

#include "platform/persistence/ManagedObject.h"

#include <memory>
#include <utility>

namespace skyflare {

ManagedObjectModel storageModel()
{
    return {1,
            {{photoEntityName,
              {{photoKeys::uuid, AttributeType::String, true},
               {photoKeys::photoData, AttributeType::Binary},
               {photoKeys::createdDate, AttributeType::Date, true}}}}};
}

std::optional<PhotoModel> photoModel(const ManagedObject &object)
{
    const AttributeValue data = object.valueForKey(photoKeys::photoData);
    const AttributeValue uuid = object.valueForKey(photoKeys::uuid);
    const AttributeValue date = object.valueForKey(photoKeys::createdDate);
    const auto *source = std::get_if<std::shared_ptr<const ByteSource>>(&data);
    const auto *text = std::get_if<std::string>(&uuid);
    const auto *seconds = std::get_if<double>(&date);
    if (!source || !text || !seconds)
        return {};
    auto image = Image::fromData(*source);
    if (!image)
        return {};
    return PhotoModel{*text, *std::move(image), *seconds};
}

} // namespace skyflare
