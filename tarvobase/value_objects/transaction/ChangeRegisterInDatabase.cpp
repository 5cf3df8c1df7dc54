#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"

#include <map>

#include "platform/Clock.h"
#include "platform/Json.h"
#include "platform/Random.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

namespace {

namespace changeColumns {
constexpr const char *number = "number", *enteredAt = "entered_at", *organisation = ChangeRegisterTable::organisation,
                     *key = "key", *sends = "sends", *refusedSends = "refused_sends", *refusalCode = "refusal_code",
                     *refusalMessage = ChangeRegisterTable::refusalMessage, *refusalDetails = "refusal_details",
                     *mayBeApplied = "may_be_applied", *queue = ChangeRegisterTable::queue,
                     *transactionId = ChangeRegisterTable::transactionId, *transactionNumber = "transaction_number";
}

// AUTOINCREMENT remembers the highest number after its row is gone. Code, message and details of a refusal have columns
// of their own, so that lists can look for a message.
EnsuredTable::Declaration changeRegisterTable() {
    using namespace changeColumns;
    return {.columns = {{number, "INTEGER PRIMARY KEY AUTOINCREMENT"},
                        {enteredAt, "INTEGER"},
                        {organisation, "TEXT"},
                        {key, "TEXT"},
                        {sends, "INTEGER DEFAULT 0"},
                        {refusedSends, "INTEGER DEFAULT 0"},
                        {refusalCode, "TEXT"},
                        {refusalMessage, "TEXT"},
                        {refusalDetails, "TEXT"},
                        {mayBeApplied, "INTEGER DEFAULT 0"},
                        {queue, "TEXT"},
                        {transactionId, "TEXT"},
                        {transactionNumber, "INTEGER"}},
            .keys = std::string("UNIQUE (") + queue + ", " + transactionId + ")"};
}

namespace endColumns {
constexpr const char *table = "TARVO_CHANGE_OUTCOMES", *place = "place", *number = "number", *outcome = "outcome",
                     *moduleName = "module_name", *recordId = "record_id";
}

/// How many changes that have ended are remembered.
constexpr std::int64_t mostEnds = 1000;

// The place is the order in which changes ended, so that one that waited for long is remembered as long as any other.
EnsuredTable::Declaration changeEndTable() {
    using namespace endColumns;
    return {.columns = {{place, "INTEGER PRIMARY KEY"},
                        {number, "INTEGER"},
                        {outcome, "TEXT"},
                        {moduleName, "TEXT"},
                        {recordId, "TEXT"}},
            .keys = std::string("UNIQUE (") + number + ")"};
}

std::optional<ErrorResponse> refusalOf(const Row& row) {
    auto code = row.valueOf(changeColumns::refusalCode);
    if (!code.asText()) return std::nullopt;
    auto details = json::parse(row.valueOf(changeColumns::refusalDetails).textOr(""));
    return ErrorResponse{.code = *code.asText(),
                         .message = row.valueOf(changeColumns::refusalMessage).textOr(""),
                         .details = details && details->asMap() ? std::optional(*details->asMap()) : std::nullopt};
}

ChangeEntry entryOf(const Row& row) {
    using namespace changeColumns;
    auto integer = [&](const char* column) { return row.valueOf(column).asInteger().value_or(0); };
    auto text = [&](const char* column) { return row.valueOf(column).textOr(""); };
    return {.number = integer(number),
            .enteredAt = integer(enteredAt),
            .organisation = text(organisation),
            .key = text(key),
            .sends = integer(sends),
            .refusedSends = integer(refusedSends),
            .lastRefusal = refusalOf(row),
            .mayBeApplied = integer(mayBeApplied) != 0,
            .queue = fromRawText<ChangeQueue>(text(queue)).value_or(ChangeQueue::older),
            .transactionId = text(transactionId),
            .transactionNumber = integer(transactionNumber)};
}

ValueMap refusalValues(const std::optional<ErrorResponse>& refusal, bool mayBeApplied = false) {
    auto details = refusal && refusal->details ? json::write(Value(*refusal->details)) : std::nullopt;
    return {{changeColumns::refusalCode, refusal ? Value(refusal->code) : Value()},
            {changeColumns::refusalMessage, refusal ? Value(refusal->message) : Value()},
            {changeColumns::refusalDetails, details ? Value(*details) : Value()},
            {changeColumns::mayBeApplied, mayBeApplied ? 1 : 0}};
}

Criteria hasNumber(std::int64_t number) { return Criteria::equalTo(changeColumns::number, number); }
Criteria areOfQueue(ChangeQueue queue, const std::vector<std::string>& transactionIds) {
    return Criteria::and_({columnIs(changeColumns::queue, std::string(rawText(queue))),
                           columnIn(changeColumns::transactionId, transactionIds)});
}

}  // namespace

ChangeRegisterInDatabase::ChangeRegisterInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                                   std::string organisation)
    : table_(std::move(databaseAdapter), ChangeRegisterTable::name, changeRegisterTable()),
      ends_(table_.adapter(), endColumns::table, changeEndTable()),
      organisation_(std::move(organisation)) {}

/// Each claim enters its change again. An insert that is ignored would use up a number, and leave gaps that users see;
/// one that looks for the row by itself keeps a copy of the pages that it writes.
std::optional<ChangeEntry> ChangeRegisterInDatabase::enter(ChangeQueue queue, const std::string& transactionId) {
    auto present = entriesOf(queue, {transactionId});
    if (!present || !present->empty()) return firstOf(std::move(present));
    return enterNew(queue, transactionId);
}

std::optional<ChangeEntry> ChangeRegisterInDatabase::enterNew(ChangeQueue queue, const std::string& transactionId) {
    using namespace changeColumns;
    auto now = static_cast<std::int64_t>(platform::Clock::now().time_since_epoch().count());
    RawQuery insert("INSERT INTO " + table_.name() + " (" + enteredAt + ", " + organisation + ", " + key + ", " +
                        changeColumns::queue + ", " + changeColumns::transactionId + ") VALUES (?,?,?,?,?)",
                    {now, organisation_, platform::Random::uuid(), rawText(queue), transactionId});
    if (!table_.execute(insert)) return std::nullopt;
    return firstOf(entriesOf(queue, {transactionId}));
}

ChangeRegister::Entries ChangeRegisterInDatabase::entries() {
    return entriesWhere(columnIs(changeColumns::organisation, organisation_));
}
ChangeRegister::Entries ChangeRegisterInDatabase::entriesOf(ChangeQueue queue,
                                                            const std::vector<std::string>& transactionIds) {
    return entriesWhere(areOfQueue(queue, transactionIds));
}

ChangeRegister::Entries ChangeRegisterInDatabase::refusedWith(const std::string& code) {
    return entriesWhere(Criteria::and_(
        {columnIs(changeColumns::refusalCode, code), columnIs(changeColumns::organisation, organisation_)}));
}

ChangeRegister::Entries ChangeRegisterInDatabase::unanswered(ChangeQueue queue) {
    return entriesWhere(Criteria::and_({columnIs(changeColumns::queue, std::string(rawText(queue))),
                                        columnIs(changeColumns::refusalCode, ErrorResponse::noAnswer("").code),
                                        columnIs(changeColumns::organisation, organisation_)}));
}

bool ChangeRegisterInDatabase::addTo(const std::string& counted, std::int64_t count,
                                     const std::vector<std::int64_t>& numbers) const {
    auto areThese = Criteria::in(changeColumns::number, ValueList(numbers.begin(), numbers.end()));
    ValueList parameters{count};
    for (auto& parameter : areThese.parameters()) parameters.push_back(parameter);
    return table_.execute(RawQuery(
        "UPDATE " + table_.name() + " SET " + counted + " = " + counted + " + ? WHERE " + areThese.sql(), parameters));
}
bool ChangeRegisterInDatabase::noteRefusal(std::int64_t number, const ErrorResponse& refusal, bool mayBeApplied) {
    if (!table_.update(refusalValues(refusal, mayBeApplied), hasNumber(number))) return false;
    return mayBeApplied ||
           table_.execute(RawQuery("UPDATE " + table_.name() + " SET " + changeColumns::refusedSends + " = " +
                                       changeColumns::sends + " WHERE " + changeColumns::number + " = ?",
                                   {number}));
}
bool ChangeRegisterInDatabase::forgetRefusal(std::int64_t number) {
    return table_.update(refusalValues(std::nullopt), hasNumber(number));
}
std::optional<std::string> ChangeRegisterInDatabase::renewKey(std::int64_t number) {
    auto key = platform::Random::uuid();
    auto values = refusalValues(std::nullopt);
    values.set(changeColumns::key, key);
    return table_.update(std::move(values), hasNumber(number)) ? std::optional(key) : std::nullopt;
}
bool ChangeRegisterInDatabase::passOn(ChangeQueue queue, const std::string& transactionId,
                                      const std::string& newTransactionId) {
    return table_.update({{changeColumns::transactionId, newTransactionId}}, areOfQueue(queue, {transactionId}));
}
bool ChangeRegisterInDatabase::setTransactionNumber(std::int64_t number, std::int64_t transactionNumber) {
    return table_.update({{changeColumns::transactionNumber, transactionNumber}}, hasNumber(number));
}
std::optional<std::vector<std::int64_t>> ChangeRegisterInDatabase::transactionNumbers() {
    auto rows = table_.fetch(Criteria::greaterThan(changeColumns::transactionNumber, std::int64_t{0}));
    if (!rows) return std::nullopt;
    std::vector<std::int64_t> numbers;
    for (auto row : *rows) numbers.push_back(row.valueOf(changeColumns::transactionNumber).asInteger().value_or(0));
    return numbers;
}
std::optional<std::int64_t> ChangeRegisterInDatabase::highestTransactionNumber() {
    FetchQuery query(table_.name());
    query.sortBy = {SortDescriptor::customOrderBy(std::string(changeColumns::transactionNumber) + " DESC")};
    query.limit = 1;
    auto rows = table_.fetch(query);
    if (!rows) return std::nullopt;
    return rows->empty() ? 0 : rows->front().valueOf(changeColumns::transactionNumber).asInteger().value_or(0);
}
bool ChangeRegisterInDatabase::end(ChangeQueue queue, const std::vector<EndedChange>& changes, ChangeOutcome outcome) {
    if (changes.empty()) return true;
    std::vector<std::string> ids;
    for (auto& change : changes) ids.push_back(change.transactionId);
    auto present = entriesOf(queue, ids);
    if (!present) return false;
    std::map<std::string, std::int64_t> numbers;
    for (auto& entry : *present) numbers[entry.transactionId] = entry.number;
    auto insert = std::string("INSERT OR REPLACE INTO ") + ends_.name() + " (" + endColumns::number + ", " +
                  endColumns::outcome + ", " + endColumns::moduleName + ", " + endColumns::recordId +
                  ") VALUES (?,?,?,?)";
    std::vector<DatabaseAdapter::Statement> statements;
    for (auto& change : changes)
        if (auto number = numbers.find(change.transactionId); number != numbers.end())
            statements.push_back(
                {insert, ValueList{number->second, rawText(outcome), change.moduleName, change.recordId}});
    DeleteQuery remove(table_.name(), areOfQueue(queue, ids));
    statements.push_back({remove.sql(), remove.parameters()});
    statements.push_back({"DELETE FROM " + ends_.name() + " WHERE " + endColumns::place + " <= (SELECT MAX(" +
                              endColumns::place + ") FROM " + ends_.name() + ") - ?",
                          ValueList{mostEnds}});
    return ends_.ensure() && table_.execute(statements);
}

ChangeRegister::Entries ChangeRegisterInDatabase::entriesWithNumbers(const std::vector<std::int64_t>& numbers) {
    return entriesWhere(Criteria::in(changeColumns::number, ValueList(numbers.begin(), numbers.end())));
}

std::optional<std::vector<ChangeEnd>> ChangeRegisterInDatabase::endsOf(const std::vector<std::int64_t>& numbers) {
    FetchQuery query(ends_.name(), Criteria::in(endColumns::number, ValueList(numbers.begin(), numbers.end())));
    query.sortBy = {SortDescriptor::customOrderBy(endColumns::number)};
    auto rows = ends_.fetch(query);
    if (!rows) return std::nullopt;
    std::vector<ChangeEnd> ends;
    for (auto row : *rows) {
        auto text = [&](const char* column) { return row.valueOf(column).textOr(""); };
        ends.push_back(
            {.number = row.valueOf(endColumns::number).asInteger().value_or(0),
             .outcome = fromRawText<ChangeOutcome>(text(endColumns::outcome)).value_or(ChangeOutcome::unknown),
             .moduleName = text(endColumns::moduleName),
             .recordId = text(endColumns::recordId)});
    }
    return ends;
}

ChangeRegister::Entries ChangeRegisterInDatabase::entriesWhere(Criteria criteria) const {
    FetchQuery query(table_.name(), std::move(criteria));
    query.sortBy = {SortDescriptor::customOrderBy(changeColumns::number)};
    auto rows = table_.fetch(query);
    if (!rows) return std::nullopt;
    std::vector<ChangeEntry> entries;
    for (auto row : *rows) entries.push_back(entryOf(row));
    return entries;
}

}  // namespace tarvo
