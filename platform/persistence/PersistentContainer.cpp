#include "platform/persistence/PersistentContainer.h"

#include "platform/persistence/ManagedObjectContext.h"

#include <utility>

namespace skyflare {

PersistentContainer::PersistentContainer(Description description, const Services &services)
    : description_(std::move(description)), services_(services)
{
}

PersistentContainer::~PersistentContainer()
{
    if (keeper_)
        keeper_->stop();
}

std::filesystem::path PersistentContainer::file() const
{
    return description_.folder / (description_.name + ".sqlite");
}

Result<> PersistentContainer::loadPersistentStores()
{
    auto opened = PersistentStore::open({file(), description_.writerTimeout}, description_.model);
    if (!opened)
        return opened.error();
    store_ = *std::move(opened);
    keeper_ = std::make_shared<StoreKeeper>(store_, services_.backgroundQueue, services_.console);
    context_ = std::make_unique<ManagedObjectContext>(store_, keeper_);
    if (!store_->isReadOnly())
        keeper_->wake(); // a crash may have left something to free
    return {};
}

Result<bool> PersistentContainer::takeForeignChanges()
{
    constexpr std::chrono::milliseconds patience{20};
    if (!store_)
        return false;
    const auto turn = store_->takeTurn(patience);
    if (!turn)
        return turn.error();
    return store_->takeForeignChanges(*turn);
}

ManagedObjectContext &PersistentContainer::viewContext()
{
    if (!context_)
        programmingError("container " + description_.name + " has no loaded store");
    return *context_;
}

} // namespace skyflare
