#include "platform/persistence/PersistentStore.h"

#include "platform/persistence/Graves.h"
#include "platform/persistence/RowBytes.h"

#include <algorithm>
#include <optional>
#include <random>
#include <utility>

namespace skyflare {

namespace {

Result<> bindValue(Statement &statement, int parameter, const AttributeValue &value,
                   std::vector<std::shared_ptr<const Bytes>> &inUse)
{
    if (const auto *text = std::get_if<std::string>(&value))
        return statement.bind(parameter, std::string_view(*text));
    if (const auto *date = std::get_if<double>(&value))
        return statement.bind(parameter, *date);
    const auto *source = std::get_if<std::shared_ptr<const ByteSource>>(&value);
    if (!source || !*source)
        return {};
    auto bytes = (*source)->readAll();
    if (!bytes)
        return bytes.error();
    inUse.push_back(*std::move(bytes));
    return statement.bind(parameter, std::span<const std::uint8_t>(*inUse.back()));
}

} // namespace

PersistentStore::PersistentStore(Options options, std::shared_ptr<StoreParts> parts,
                                 std::unique_ptr<Database> writer)
    : options_(std::move(options)),
      parts_(std::move(parts)),
      writer_(std::move(writer)),
      readOnly_(writer_->isReadOnly()),
      mark_(std::to_string(std::random_device{}())),
      foreignChanges_(parts_->tables)
{
}

Result<std::shared_ptr<PersistentStore>> PersistentStore::open(const Options &options,
                                                               const ManagedObjectModel &model)
{
    std::vector<EntityTable> tables(model.entities.begin(), model.entities.end());
    auto opened = openStoreFile(options.file, tables, model.version, options.writerTimeout);
    if (!opened)
        return opened.error();
    auto parts = std::make_shared<StoreParts>(std::move(tables), options.file, opened->readers);
    auto store = std::make_shared<PersistentStore>(options, std::move(parts), std::move(opened->writer));
    if (const auto begun = store->foreignChanges_.begin(*store->writer_); !begun)
        return begun.error();
    return store;
}

const EntityTable &PersistentStore::table(std::string_view entityName) const
{
    const auto &tables = parts_->tables;
    const auto found = std::find_if(tables.begin(), tables.end(),
                                    [&](const auto &each) { return each.name() == entityName; });
    if (found == tables.end())
        programmingError("the model has no entity \"" + std::string(entityName) + '"');
    return *found;
}

Result<> PersistentStore::write(const WriterGate::Turn & /*turn*/, const StoreChanges &changes)
{
    Result<> written = writeAll(changes);
    if (!written) {
        for (const auto &object : changes.inserted)
            object->setObjectID({});
    }
    return written;
}

/// One transaction; whatever others do comes wholly before it or after it.
Result<> PersistentStore::commitWith(const std::function<Result<>()> &changes)
{
    auto transaction = Transaction::begin(*writer_, Transaction::Kind::Write);
    if (!transaction)
        return transaction.error();
    if (const auto looked = foreignChanges_.look(*writer_); !looked)
        return looked.error();
    if (const auto made = changes(); !made)
        return made.error();
    // Before the commit, so that nobody comes between; should that fail, one look too many follows.
    if (const auto looked = foreignChanges_.didWrite(*writer_); !looked)
        return looked.error();
    return transaction->commit();
}

Result<bool> PersistentStore::takeForeignChanges(const WriterGate::Turn & /*turn*/)
{
    return foreignChanges_.take(*writer_);
}

Result<> PersistentStore::writeAll(const StoreChanges &changes)
{
    const bool deletesRows = std::any_of(changes.deleted.begin(), changes.deleted.end(),
                                         [](const auto &object) { return object->objectID().has_value(); });
    if (changes.inserted.empty() && !deletesRows)
        return {};
    std::vector<std::unique_ptr<RowRegistry::Deletion>> deletions; // until the commit is through
    return commitWith([&]() -> Result<> {
        for (const auto &object : changes.inserted) {
            if (const auto done = insert(*object); !done)
                return done.error();
        }
        for (const auto &object : changes.deleted) {
            const auto objectID = object->objectID();
            if (!objectID)
                continue;
            const EntityTable &from = table(object->entity().name);
            deletions.push_back(
                std::make_unique<RowRegistry::Deletion>(parts_->registry, &from, std::span(&*objectID, 1)));
            keepHeldBytes(*deletions.back(), *writer_);
            if (const auto done = deleteRow(from, *objectID); !done)
                return done.error();
        }
        return {};
    });
}

Result<> PersistentStore::insert(ManagedObject &object)
{
    const EntityTable &into = table(object.entity().name);
    auto statement = writer_->prepare(into.insertSql());
    if (!statement)
        return statement.error();
    std::vector<AttributeValue> values;
    for (const std::size_t attribute : into.columns())
        values.push_back(object.valueForKey(into.entity().attributes[attribute].name));
    std::vector<std::shared_ptr<const Bytes>> inUse;
    int parameter = 0;
    for (const AttributeValue &value : values) {
        if (const auto bound = bindValue(*statement, ++parameter, value, inUse); !bound)
            return bound.error();
    }
    if (const auto stepped = statement->step(); !stepped)
        return stepped.error();
    // Before the commit: whoever sees the row can then tell that the pending object is the same.
    object.setObjectID(writer_->lastInsertedRow());
    return {};
}

Result<> PersistentStore::deleteRow(const EntityTable &from, std::int64_t objectID)
{
    auto statement = writer_->prepare(from.deleteSql());
    if (!statement)
        return statement.error();
    if (const auto bound = statement->bind(1, objectID); !bound)
        return bound.error();
    if (const auto stepped = statement->step(); !stepped)
        return stepped.error();
    return {};
}

Result<> PersistentStore::deleteAll(const WriterGate::Turn & /*turn*/, const EntityTable &table)
{
    return commitWith([&] { return bury(*writer_, table, mark_); });
}

void keepHeldBytes(const RowRegistry::Deletion &deletion, Database &database)
{
    // Bytes that cannot be read are lost either way; that must not keep the row from going.
    for (const auto &bytes : deletion.held())
        static_cast<void>(bytes->keepInMemory(database));
}

} // namespace skyflare
