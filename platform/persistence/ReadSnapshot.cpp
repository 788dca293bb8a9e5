#include "platform/persistence/ReadSnapshot.h"

#include "platform/persistence/RowBytes.h"

#include <utility>

namespace skyflare {

namespace {

Result<> bindPredicate(Statement &statement, const FetchRequest &request)
{
    if (!request.predicate)
        return {};
    const AttributeValue &value = request.predicate->value;
    if (const auto *text = std::get_if<std::string>(&value))
        return statement.bind(1, std::string_view(*text));
    if (const auto *date = std::get_if<double>(&value))
        return statement.bind(1, *date);
    programmingError("a predicate compares a String or a Date");
}

} // namespace

ReadSnapshot::ReadSnapshot(std::shared_ptr<StoreParts> parts, RowRegistry::Fetch fetch,
                           ReaderPool::Reader reader, Transaction transaction)
    : parts_(std::move(parts)),
      fetch_(std::move(fetch)),
      reader_(std::move(reader)),
      transaction_(std::move(transaction))
{
}

Result<ReadSnapshot> ReadSnapshot::begin(std::shared_ptr<StoreParts> parts)
{
    RowRegistry::Fetch fetch(parts->registry);
    auto reader = parts->readers.acquire();
    if (!reader)
        return reader.error();
    auto transaction = Transaction::begin(**reader, Transaction::Kind::Read);
    if (!transaction)
        return transaction.error();
    return ReadSnapshot(std::move(parts), std::move(fetch), *std::move(reader), *std::move(transaction));
}

Result<std::vector<std::shared_ptr<ManagedObject>>> ReadSnapshot::fetch(const EntityTable &table,
                                                                        const FetchRequest &request)
{
    auto statement = (*reader_).prepare(table.selectSql(request));
    if (!statement)
        return statement.error();
    if (const auto bound = bindPredicate(*statement, request); !bound)
        return bound.error();
    const std::int64_t limit = request.fetchLimit > 0 ? request.fetchLimit : -1;
    if (const auto bound = statement->bind(2, limit); !bound)
        return bound.error();
    std::vector<std::shared_ptr<ManagedObject>> objects;
    while (true) {
        const auto row = statement->step();
        if (!row)
            return row.error();
        if (!*row)
            return objects;
        auto object = objectOf(table, request, *statement);
        if (!object)
            return object.error();
        objects.push_back(*std::move(object));
    }
}

Result<std::shared_ptr<ManagedObject>>
ReadSnapshot::objectOf(const EntityTable &table, const FetchRequest &request, const Statement &row)
{
    const std::int64_t objectID = row.integer(0).value_or(0);
    std::vector<AttributeValue> values(table.columns().size());
    int column = 0;
    for (const std::size_t attribute : table.columns()) {
        if (!request.includesPropertyValues)
            break;
        if (const auto done = readValue({&table, objectID, attribute}, row, ++column, values[attribute]);
            !done)
            return done.error();
    }
    return std::make_shared<ManagedObject>(table.entity(), objectID, std::move(values));
}

Result<> ReadSnapshot::readValue(const RowKey &key, const Statement &row, int column, AttributeValue &into)
{
    switch (key.table->entity().attributes[key.attribute].type) {
    case AttributeType::String:
        if (auto text = row.text(column))
            into = std::move(*text);
        return {};
    case AttributeType::Date:
        if (const auto date = row.real(column))
            into = *date;
        return {};
    case AttributeType::Binary:
        break;
    }
    const auto length = row.integer(column);
    if (!length)
        return {};
    const RowRegistry::Entry entry =
        parts_->registry.bytesOf(parts_, key, static_cast<std::uint64_t>(*length));
    into = entry.bytes;
    return entry.rowGoes ? entry.bytes->keepInMemory(*reader_) : Result<>();
}

Result<std::int64_t> ReadSnapshot::count(const EntityTable &table, const FetchRequest &request)
{
    auto statement = (*reader_).prepare(table.countSql(request));
    if (!statement)
        return statement.error();
    if (const auto bound = bindPredicate(*statement, request); !bound)
        return bound.error();
    if (const auto row = statement->step(); !row)
        return row.error();
    return statement->integer(0).value_or(0);
}

Result<bool> ReadSnapshot::contains(const EntityTable &table, std::int64_t objectID)
{
    auto statement = (*reader_).prepare(table.containsSql());
    if (!statement)
        return statement.error();
    if (const auto bound = statement->bind(1, objectID); !bound)
        return bound.error();
    return statement->step();
}

} // namespace skyflare
