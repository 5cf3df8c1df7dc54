#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kelva_db/Database.h"
#include "kelva_db/internal/ChangeTracker.h"
#include "kelva_db/internal/FileFormat.h"
#include "kelva_db/internal/ListTables.h"
#include "kelva_db/internal/StatementCache.h"
#include "kelva_db/internal/UntrustedSql.h"

namespace kelva {

/// A database file beside the main one, under the name by which statements know it.
struct Attachment {
    std::string path, name;
    FileFormat format;
};

/// One connection to SQLite with all that belongs to it. Used by one thread at a time.
class Connection {
public:
    enum class Role { writer, reader, memory };

    /// Opens and proves that the file can be read. The tracker, if any, is notified of the row changes and must live
    /// longer.
    Connection(const std::string& path, const FileFormat& format, Role role, int busyTimeout, ChangeTracker* tracker);
    ~Connection();
    Connection(const Connection&) = delete;

    Database& database() { return database_; }
    sqlite3* handle() const { return handle_.get(); }

    void execute(std::string_view sql, std::span<const Value> parameters);
    std::vector<std::string> executeUntrusted(std::string_view sql, std::chrono::milliseconds timeLimit);
    Rows query(std::string_view sql, std::span<const Value> parameters);
    void insertBatch(const std::string& sql, const RowSource& rows);
    std::vector<std::string> columnNames(std::string_view table) { return shapeOf(table).columns; }
    /// Whether a column of the table has a default other than NULL.
    bool hasDefaults(std::string_view table) { return shapeOf(table).hasDefaults; }

    /// Sets how long statements wait for a lock of another connection, in milliseconds.
    void setBusyTimeout(int milliseconds);

    /// Transactions. Only `Writer`, the readers and savepoints begin and end any.
    void begin(bool immediate);
    void commit();
    /// Never throws: what cannot be rolled back any more is over.
    void rollback() noexcept;
    /// Ends a transaction that has changed nothing.
    void endRead() noexcept;
    void inSavepoint(tarvo::platform::FunctionRef<void()> block);

    void attach(const Attachment& attachment);
    void detach(const std::string& name);

    /// Copies the log into the file. Only the writer may: another copier at the time of a commit can damage the file.
    void checkpoint() noexcept;
    /// The same when the log has grown large.
    void checkpointWhenLarge() noexcept;

    /// Settles, as long as it lives, whether statements that write are accepted or refused.
    class Writability {
    public:
        Writability(Connection& connection, bool mayWrite) : connection_(connection), before_(connection.readOnly_) {
            connection.readOnly_ = !mayWrite;
        }
        ~Writability() { connection_.readOnly_ = before_; }
        Writability(const Writability&) = delete;

    private:
        Connection& connection_;
        bool before_;
    };

private:
    friend class Execution;
    struct Close {
        void operator()(sqlite3* handle) const;
    };

    /// What is kept of a table until the schema changes.
    struct Shape {
        std::vector<std::string> columns;
        bool hasDefaults = false;
    };

    void configure(Role role, int busyTimeout);
    void installHooks();
    void runInternal(const char* sql);
    std::size_t parameterLimit() const;
    int authorize(int action, const char* first, const char* second);
    int authorizeDelete(std::string_view table);
    class UntrustedScope;
    std::string_view runUntrusted(std::string_view sql, UntrustedSql& bounds);
    const Shape& shapeOf(std::string_view table);
    std::string schemaVersions();
    void checkShapes();
    void noteStatement(std::string_view sql);
    void noticeSchema();
    void forgetShapes() noexcept;
    void noteFailure();
    void checkUsable() const;

    std::unique_ptr<sqlite3, Close> handle_;
    ListTables listTables_;
    StatementCache statements_;
    Database database_;
    ChangeTracker* tracker_;
    std::map<std::string, FileFormat> attached_;

    UntrustedSql* untrusted_ = nullptr;  // the bounds of the statements that run, if they came from outside
    bool readOnly_ = false;
    bool internal_ = false;  // a statement of the library's own is being prepared or run
    bool inTransaction_ = false;
    bool watched_ = false;               // statements were prepared for a transaction with observers
    std::optional<DatabaseError> lost_;  // why SQLite has ended the transaction by itself
    std::string dropped_;                // table whose removal is being prepared
    int pagesInLog_ = 0;

    std::string shapesVersion_;     // schema for which the shapes were read
    bool isSchemaChecked_ = false;  // the shapes are those of the transaction under way
    std::map<std::string, Shape, std::less<>> shapes_;
};

}  // namespace kelva
