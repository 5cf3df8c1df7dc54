#include "kelva_db/internal/StatementCache.h"

#include <sqlite3.h>

#include "kelva_db/internal/Sql.h"
#include "kelva_db/internal/Sqlite.h"

namespace kelva {

StatementCache::Loan::~Loan() {
    if (statement_) cache_->giveBack(statement_, std::move(text_));
}

StatementCache::Loan StatementCache::take(std::string_view sql, std::string_view& rest) {
    Loan loan;
    loan.cache_ = this;
    std::string text(sql);
    rest = {};
    if ((loan.statement_ = takeKept(text))) {
        loan.text_ = std::move(text);
        return loan;
    }
    const char* tail = nullptr;
    // With its closing zero the text is not copied once more.
    auto code = sqlite3_prepare_v2(handle_, text.c_str(), static_cast<int>(text.size() + 1), &loan.statement_, &tail);
    if (code != SQLITE_OK) throwLastError(handle_, Stage::prepare);
    rest = sql.substr(static_cast<std::size_t>(tail - text.c_str()));
    bool whole = isOnlySpaceAndSemicolons(rest);
    if (whole) rest = {};
    if (whole && loan.statement_ && text.size() <= longestText) loan.text_ = std::move(text);
    return loan;
}

sqlite3_stmt* StatementCache::takeKept(const std::string& text) {
    auto found = byText_.find(text);
    if (found == byText_.end()) return nullptr;
    auto entry = found->second;
    auto statement = entry->statement;
    byText_.erase(found);
    kept_.erase(entry);
    return statement;
}

void StatementCache::giveBack(sqlite3_stmt* statement, std::string text) {
    if (text.empty()) {
        sqlite3_finalize(statement);
        return;
    }
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    kept_.push_front({std::move(text), statement});
    byText_.emplace(kept_.front().text, kept_.begin());
    if (kept_.size() <= capacity) return;
    auto oldest = std::prev(kept_.end());
    auto [begin, end] = byText_.equal_range(oldest->text);
    for (auto i = begin; i != end; ++i) {
        if (i->second != oldest) continue;
        byText_.erase(i);
        break;
    }
    sqlite3_finalize(oldest->statement);
    kept_.erase(oldest);
}

void StatementCache::clear() {
    byText_.clear();
    for (auto& kept : kept_) sqlite3_finalize(kept.statement);
    kept_.clear();
}

}  // namespace kelva
