#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "kelva_db/KelvaDatabase.h"
#include "platform/Files.h"
#include "tests/support/LogWatch.h"

namespace kelva::tests {

/// A folder of its own for each test, removed afterwards. The test fails on a warning in the log that it does not
/// expect.
class Folder {
public:
    Folder() : path_(tarvo::files::makeTemporaryDirectory("kelva")) {}
    ~Folder() { tarvo::files::remove(path_); }
    Folder(const Folder&) = delete;
    void expectWarning(std::string part) { log_.expectWarning(std::move(part)); }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    tarvo::LogWatch log_;
    std::string path_;
};

/// A key that needs no derivation.
inline Configuration rawConfiguration() {
    Configuration configuration;
    configuration.setRawKey(std::string(32, 'k'), std::string(16, 's'));
    return configuration;
}

inline Configuration passphraseConfiguration(const std::string& passphrase) {
    Configuration configuration;
    configuration.setKey(passphrase);
    return configuration;
}

/// What a call fails with; nullopt if it succeeds.
template <class F>
std::optional<FailureKind> failureOf(F&& call) {
    try {
        call();
    } catch (const DatabaseError& error) {
        return error.kind();
    }
    return std::nullopt;
}

inline std::string contentOf(const std::string& path) {
    auto data = tarvo::files::read(path);
    return data ? data->text() : std::string();
}

/// Runs statements in a transaction of their own.
inline void execute(KelvaDatabase& database, std::string_view sql) {
    database.write([&](Database& writer) { writer.execute(sql); });
}

/// The first cell of a query as an integer, -1 when there is none.
inline std::int64_t integer(KelvaDatabase& database, std::string_view sql, std::span<const Value> parameters = {}) {
    std::int64_t result = -1;
    database.read([&](Database& reader) {
        auto rows = reader.query(sql, parameters);
        if (!rows.empty()) result = rows.cell(0, 0).asInteger().value_or(-1);
    });
    return result;
}

}  // namespace kelva::tests
