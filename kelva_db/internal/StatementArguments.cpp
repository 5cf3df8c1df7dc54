#include "kelva_db/internal/StatementArguments.h"

#include "kelva_db/internal/Sqlite.h"

namespace kelva {

namespace {

[[noreturn]] void throwTooFew() {
    throwError(FailureKind::misuse, "the statement has more placeholders than there are parameters");
}

}  // namespace

StatementArguments::StatementArguments(std::string_view sql, std::span<const Value> parameters, std::size_t limit)
    : values_(parameters) {
    bound_.assign(values_.views().begin(), values_.views().end());
    sql_ = sql;
    if (bound_.size() <= limit) return;
    lifted_ = liftLists(sql);
    sql_ = lifted_.sql;
    takeLists();
    if (bound_.size() > limit)
        throwError(FailureKind::misuse, "the statement has " + std::to_string(bound_.size()) +
                                            " parameters outside of IN lists; SQLite takes " + std::to_string(limit));
}

void StatementArguments::takeLists() {
    auto all = values_.views();
    bound_.clear();
    std::size_t taken = 0;
    for (auto& list : lifted_.lists) {
        if (list.firstParameter + list.count > all.size()) throwTooFew();
        bound_.insert(bound_.end(), all.begin() + static_cast<std::ptrdiff_t>(taken),
                      all.begin() + static_cast<std::ptrdiff_t>(list.firstParameter));
        lists_.push_back(all.subspan(list.firstParameter, list.count));
        taken = list.firstParameter + list.count;
    }
    bound_.insert(bound_.end(), all.begin() + static_cast<std::ptrdiff_t>(taken), all.end());
}

}  // namespace kelva
