#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "tarvobase/value_objects/field/PicklistMetadata.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/module/Settings.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {

/// Passes all calls on and counts the reads.
class CountingAdapter final : public DatabaseAdapter {
public:
    explicit CountingAdapter(std::shared_ptr<DatabaseAdapter> next) : next_(std::move(next)) {}

    /// Returns the number of reads since the last call.
    int takeReads() { return reads_.exchange(0); }

    using DatabaseAdapter::create;
    using DatabaseAdapter::execute;
    using DatabaseAdapter::fetchObjects;
    using DatabaseAdapter::insertInto;
    using DatabaseAdapter::update;
    std::string databaseName() const override { return next_->databaseName(); }
    bool transaction(std::string_view name, platform::FunctionRef<bool()> work) override {
        return next_->transaction(name, work);
    }
    bool joinTransaction(std::string_view name, platform::FunctionRef<bool()> work) override {
        return next_->joinTransaction(name, work);
    }
    bool createTable(const std::string& rawQuery) override { return next_->createTable(rawQuery); }
    bool create(const std::string& table, const ColumnDefinitions& columns, const std::vector<std::string>& primaryKey,
                const std::vector<std::vector<std::string>>& uniqueKeys) override {
        return next_->create(table, columns, primaryKey, uniqueKeys);
    }
    bool insertInto(const std::string& table, const ValueMap& values) override {
        return next_->insertInto(table, values);
    }
    bool insertInto(const std::string& table, const RowSource& rows) override { return next_->insertInto(table, rows); }
    std::optional<std::vector<std::size_t>> insertAccepted(const std::string& table, const RowSource& rows) override {
        return next_->insertAccepted(table, rows);
    }
    std::optional<std::vector<std::size_t>> updateAccepted(const std::string& table, const RowSource& rows,
                                                           std::span<const std::size_t> keys) override {
        return next_->updateAccepted(table, rows, keys);
    }
    bool update(const std::string& table, const ValueMap& values, const Criteria& criteria) override {
        return next_->update(table, values, criteria);
    }
    bool update(const std::string& table, const std::vector<ValueMap>& values,
                const std::vector<Criteria>& criteria) override {
        return next_->update(table, values, criteria);
    }
    std::optional<Rows> fetchObjects(const std::string& rawQuery, const std::optional<ValueList>& parameters) override {
        ++reads_;
        return next_->fetchObjects(rawQuery, parameters);
    }
    bool dropTable(const std::string& table) override { return next_->dropTable(table); }
    bool attachDatabase(const std::string& path, const std::string& name) override {
        return next_->attachDatabase(path, name);
    }
    bool detachDatabase(const std::string& name) override { return next_->detachDatabase(name); }
    bool execute(const std::vector<Statement>& queries) override { return next_->execute(queries); }
    std::vector<std::string> columnNames(const std::string& table) override { return next_->columnNames(table); }

private:
    const std::shared_ptr<DatabaseAdapter> next_;
    std::atomic<int> reads_ = 0;
};

/// A test with the account's database, the tables of metadata in it, and functions that fill them.
class MetadataTest : public FoundationTest {
protected:
    void SetUp() override;

    CountingAdapter& adapter() { return *adapter_; }
    void use(Naming naming);
    /// Returns the identifier, under the naming in force, of a field that `field` has made.
    std::string identifier(const std::string& name) const;

    /// Returns a field whose CRM column is the name in capitals.
    static FieldMetadata field(const std::string& module, const std::string& name,
                               FieldDataType type = FieldDataType::text);
    static FieldMetadata subform(const std::string& module, const std::string& name, Value target);
    /// Returns the place of a field in a layout.
    static LayoutFieldData place(const FieldMetadata& field, const std::string& layout, const std::string& section,
                                 int sequence, int position);

    void store(const std::vector<Module>& modules);
    void store(const std::vector<FieldMetadata>& fields);
    void store(const std::vector<LayoutFieldData>& places);
    void store(const std::vector<Settings>& settings);
    void storePicklist(const FieldMetadata& field, const std::string& layout, const std::vector<std::string>& values);
    void storeLayout(const std::string& module, const std::string& layout, bool isDefault);
    void storePermission(const std::string& module, const std::string& key, bool value);
    /// Stores a module with its fields. Its API name is its name followed by "_Api".
    void storeModule(const std::string& name, const std::vector<FieldMetadata>& fields);

    /// Runs a use case to its end.
    template <class UC>
    auto run(typename UC::Request request) {
        struct Answer {
            std::optional<typename UC::Response> response;
            std::optional<typename UC::Failure> failure;
        } answer;
        auto usecase = std::make_shared<UC>();
        usecase->execute(std::move(request), [&](auto response, auto failure) {
            if (response) answer.response.emplace(*response);
            if (failure) answer.failure.emplace(*failure);
        });
        pump([&] { return answer.response || answer.failure; });
        return answer;
    }

private:
    std::shared_ptr<CountingAdapter> adapter_;
};

}  // namespace tarvo
