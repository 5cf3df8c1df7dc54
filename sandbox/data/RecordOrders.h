#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sandbox/data/Records.h"

namespace tarvo::sandbox {

/// A field to sort by; without one the order is by id.
struct RecordSort {
    const FieldData* field = nullptr;
    bool isAscending = false;
};

/// Lists of positions in a module, filtered and sorted. Sorting many records costs, and clients page through one list,
/// so the last orders are kept, up to a number of positions in all. Any thread; two that ask for one order at once may
/// both make it.
class RecordOrders {
public:
    using Positions = std::shared_ptr<const std::vector<std::uint32_t>>;
    using Filter = std::function<bool(const RecordData&)>;

    /// The positions of the records that pass the filter, those without a value last, equal ones by id in the same
    /// direction. `filterId` names the filter: one name, one result.
    Positions order(const RecordStore& records, const std::string& module, const std::string& filterId,
                    const Filter& filter, const RecordSort& sort);

private:
    struct Kept {
        std::string key;
        Positions positions;
    };

    Positions kept(const std::string& key);
    void keep(const std::string& key, const Positions& positions);

    std::mutex mutex_;
    /// The one used last first.
    std::list<Kept> kept_;
};

}  // namespace tarvo::sandbox
