#pragma once

#include <span>
#include <string>
#include <vector>

#include "kelva_db/internal/BoundValues.h"
#include "platform/Rows.h"

struct sqlite3;

namespace kelva {

/// Virtual tables through which one statement reads any number of values, one object a connection:
/// "kelva_values(n)" has the values of the nth list in its column `value`, and "kelva_rows_w" the cells of the batch
/// in its columns c0 to c(w-1). Neither exists in a file. Their columns have no type, so that values come out as they
/// went in and the column that takes them decides.
class ListTables {
public:
    using List = std::span<const ValueView>;

    /// Makes the tables known to a connection, which must not outlive this object.
    void registerWith(sqlite3* handle);

    /// Hands in the lists for the statement that runs next; they must outlive its run.
    void setLists(std::vector<List> lists) { lists_ = std::move(lists); }
    /// The batch for the statement that runs next, or null.
    void setBatch(const tarvo::RowSource* batch) { batch_ = batch; }

    /// The smallest table with room for so many columns.
    static std::string rowsTableFor(std::size_t columns);

    List list(std::size_t number) const { return number < lists_.size() ? lists_[number] : List(); }
    const tarvo::RowSource* batch() const { return batch_; }

private:
    std::vector<List> lists_;
    const tarvo::RowSource* batch_ = nullptr;
};

}  // namespace kelva
