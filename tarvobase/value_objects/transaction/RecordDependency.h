#pragma once

#include <cstdint>
#include <string>

#include "tarvobase/storage/Mapper.h"

namespace tarvo {

struct RecordDependency;

/// The names and the strict conversions of a dependency on a record, for stores that keep values as they are.
struct RecordDependencyMapper : StoredMapper<RecordDependencyMapper, RecordDependency> {
    std::string_view tableName = of("RecordDependency", "RECORD_DEPENDENCIES");
    std::string_view recordId = of("recordId", "record_id");
    std::string_view transactionId = of("transactionId", "txn_id");
    std::string_view type = of("type", "dependency_type");
};
struct RecordDependencyDBMapper : TableTwin<RecordDependencyMapper> {};

/// A record on which a transaction of the current queue depends, and the kind of the dependency. No operation of the
/// library stores one; the mapper lets hosts read the table.
struct RecordDependency {
    /// The raw values are stored.
    enum class Kind { add = 0, edit = 1, delete_ = 2, read = 3 };

    std::string recordId;
    std::int64_t transactionId = 0;
    Kind kind = Kind::read;

    static constexpr auto fields() {
        using V = RecordDependency;
        using Names = RecordDependencyMapper;
        return describe(field("recordId", &V::recordId, &Names::recordId),
                        fieldBy<IntegerCodec<std::int64_t>>("transactionId", &V::transactionId, &Names::transactionId),
                        fieldBy<IntegerCodec<Kind>>("kind", &V::kind, &Names::type));
    }
    friend bool operator==(const RecordDependency&, const RecordDependency&) = default;
};

template <>
struct EnumCases<RecordDependency::Kind> {
    using K = RecordDependency::Kind;
    static constexpr EnumCase<K> cases[] = {
        {K::add, "add"}, {K::edit, "edit"}, {K::delete_, "delete_"}, {K::read, "read"}};
};

}  // namespace tarvo
