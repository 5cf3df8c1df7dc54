#pragma once

#include <string>
#include <vector>

#include "kelva_db/DatabaseValue.h"

namespace kelva {

/// A statement that renders itself: text with placeholders and the values in their order.
class QueryInterfaceProtocol {
public:
    virtual ~QueryInterfaceProtocol() = default;
    virtual std::string sql() const = 0;
    virtual ValueList parameters() const = 0;
};

/// Builds "UPDATE table SET ... WHERE ...".
class UpdateQuery final : public QueryInterfaceProtocol {
public:
    explicit UpdateQuery(std::string table) : table_(std::move(table)) {}
    UpdateQuery& set(const ValueMap& values);
    /// Several filters are joined by AND.
    UpdateQuery& filter(std::string sql, ValueList parameters);
    std::string sql() const override;
    ValueList parameters() const override;

private:
    std::string table_;
    ValueMap values_;
    std::vector<std::string> filters_;
    ValueList filterParameters_;
};

}  // namespace kelva
