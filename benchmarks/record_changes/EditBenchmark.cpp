#include <filesystem>
#include <utility>

#include "benchmarks/kelva/HandWritten.h"
#include "benchmarks/kelva/Prepared.h"
#include "benchmarks/record_changes/SignedInAccount.h"

// Measures one edit of a record, from the call until it is durable: the record, its sides before and after the edit,
// the change in the queue and its entry in the register. The floor runs the same statements with hand-written code on a
// copy of the file, one time each, and gets the texts ready made.
namespace tarvo::benchmarks {

namespace {

using kelva::benchmarks::Prepared;

/// The statements of an edit, in their order.
class HandEdit {
public:
    HandEdit(sqlite3* handle, std::string sides, std::string body)
        : handle_(handle), sides_(std::move(sides)), body_(std::move(body)) {}

    void edit(const std::string& id, std::size_t number) {
        auto numberText = std::to_string(number), transactionId = "transaction-" + numberText;
        begin_.run();
        fields_.run();
        sidesOf_.run({id});
        if (sidesOf_.read().empty()) record_.run({id});
        storeSides_.run({id, sides_, sides_});
        update_.run({"by hand " + numberText, "Bonn", "+49 228 " + numberText, id});
        queued_.run({id});
        highestTime_.run();
        store_.run({transactionId, id, body_, highestTime_.read()});
        enter_.run({"a-key-of-thirty-six-bytes-" + numberText, transactionId});
        commit_.run();
    }

private:
    Prepared prepared(const char* sql) const { return {handle_, sql}; }

    sqlite3* handle_;
    const std::string sides_, body_;
    Prepared begin_ = prepared("BEGIN IMMEDIATE");
    Prepared sidesOf_ = prepared("SELECT * FROM TRANSACTIONS_RECORDS WHERE record_id = ?");
    Prepared record_ = prepared("SELECT * FROM LeadsRecords WHERE ID = ?");
    Prepared storeSides_ = prepared("INSERT OR REPLACE INTO TRANSACTIONS_RECORDS VALUES (?, ?, ?)");
    Prepared update_ = prepared("UPDATE LeadsRecords SET COMPANY = ?, CITY = ?, PHONE = ? WHERE ID = ?");
    Prepared fields_ = prepared(
        "SELECT * FROM MODULE_SPECIFIC_METADATA WHERE module_name = 'Leads' AND crm_col_name IN ('ID', 'COMPANY', "
        "'CITY', 'PHONE')");
    Prepared queued_ = prepared("SELECT * FROM TRANSACTIONS WHERE record_id = ?");
    Prepared highestTime_ = prepared(
        "SELECT CAST(transaction_time AS INTEGER) FROM TRANSACTIONS ORDER BY CAST(transaction_time AS INTEGER) DESC "
        "LIMIT 1");
    Prepared store_ = prepared(
        "INSERT INTO TRANSACTIONS (transaction_id, record_id, module_name, operation_type, data_json, uri_data, "
        "transaction_time) VALUES (?, ?, 'Leads', 2, ?, '{\"module\":\"Leads\",\"moduleAPI\":\"Leads\"}', ? + 1)");
    Prepared enter_ = prepared(
        "INSERT INTO TARVO_CHANGES (entered_at, key, sends, queue, transaction_id) VALUES (0, ?, 0, 'older', ?)");
    Prepared commit_ = prepared("COMMIT");
};

std::string firstText(DatabaseAdapter& database, const std::string& sql) {
    auto rows = database.fetchObjects(sql, std::nullopt);
    return rows && !rows->empty() ? rows->front().cell(0).copy().toText().value_or("") : "";
}

/// The argument is the number of changes that wait already.
void editRecord(benchmark::State& state) {
    SignedInAccount account;
    if (!account.isReady()) return state.SkipWithError("the download failed");
    auto waiting = static_cast<std::size_t>(state.range(0));
    for (std::size_t i = 0; i < waiting; ++i) account.edit(i, "before");
    auto path = account.adapter()->databaseName();
    auto sides = firstText(*account.adapter(), "SELECT CAST(server_data AS TEXT) FROM TRANSACTIONS_RECORDS");
    auto body = firstText(*account.adapter(), "SELECT CAST(data_json AS TEXT) FROM TRANSACTIONS");
    account.close();
    std::filesystem::copy_file(path, path + "-by-hand");
    account.open();

    kelva::benchmarks::HandWritten file(path + "-by-hand", "a passphrase");
    HandEdit hand(file.handle(), sides, body);
    Comparison comparison(state);
    std::size_t number = waiting;
    for (auto _ : state) {
        ++number;
        comparison.round([&] { account.edit(number, "ours"); },
                         [&] { hand.edit(account.ids[number % account.recordCount], number); });
    }
    comparison.finish(1);
    auto count = "SELECT COUNT(*) FROM TRANSACTIONS";
    Prepared byHand(file.handle(), count);
    byHand.run();
    if (firstText(*account.adapter(), count) != byHand.read()) state.SkipWithError("the queues differ");
}

BENCHMARK(editRecord)->Arg(1)->Arg(1'000)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace tarvo::benchmarks
