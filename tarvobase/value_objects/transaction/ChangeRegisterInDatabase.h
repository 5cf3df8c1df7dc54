#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/ChangeRegister.h"

namespace tarvo {

/// The table of the register, with the columns that statements over several tables name.
struct ChangeRegisterTable {
    static constexpr const char *name = "TARVO_CHANGES", *queue = "queue", *transactionId = "transaction_id",
                                *refusalMessage = "refusal_message", *organisation = "organisation";
};

/// The register of changes in the account's database, and the table of what became of those that ended last. All
/// organisations share both.
class ChangeRegisterInDatabase final : public ChangeRegister {
public:
    /// The adapter may be null.
    ChangeRegisterInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter, std::string organisation);

    std::optional<ChangeEntry> enter(ChangeQueue queue, const std::string& transactionId) override;
    std::optional<ChangeEntry> enterNew(ChangeQueue queue, const std::string& transactionId) override;
    Entries entries() override;
    Entries entriesOf(ChangeQueue queue, const std::vector<std::string>& transactionIds) override;
    Entries refusedWith(const std::string& code) override;
    Entries unanswered(ChangeQueue queue) override;
    bool noteSends(const std::vector<std::int64_t>& numbers) override { return addTo("sends", 1, numbers); }
    bool takeBackSends(const std::vector<std::int64_t>& numbers) override { return addTo("sends", -1, numbers); }
    bool noteUnsent(const std::vector<std::int64_t>& numbers) override { return addTo("refused_sends", 1, numbers); }
    bool noteRefusal(std::int64_t number, const ErrorResponse& refusal, bool mayBeApplied) override;
    bool forgetRefusal(std::int64_t number) override;
    std::optional<std::string> renewKey(std::int64_t number) override;
    bool passOn(ChangeQueue queue, const std::string& transactionId, const std::string& newTransactionId) override;
    bool setTransactionNumber(std::int64_t number, std::int64_t transactionNumber) override;
    std::optional<std::vector<std::int64_t>> transactionNumbers() override;
    std::optional<std::int64_t> highestTransactionNumber() override;
    bool end(ChangeQueue queue, const std::vector<EndedChange>& changes, ChangeOutcome outcome) override;
    Entries entriesWithNumbers(const std::vector<std::int64_t>& numbers) override;
    std::optional<std::vector<ChangeEnd>> endsOf(const std::vector<std::int64_t>& numbers) override;

private:
    bool addTo(const std::string& column, std::int64_t count, const std::vector<std::int64_t>& numbers) const;
    Entries entriesWhere(Criteria criteria) const;

    EnsuredTable table_, ends_;
    const std::string organisation_;
};

}  // namespace tarvo
