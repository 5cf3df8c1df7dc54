#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/transaction/Change.h"
#include "tarvobase/transaction/TransactionIds.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

/// Is notified of changes that could not be queued, on the thread of the call.
class RecordTransactionManagerDelegate : public virtual CommonErrorProtocol {};

/// Puts changes into the older queue. Observers are notified and the queue is woken after the commit. Each operation
/// stores in the transaction of the database around it, blocks its caller, and may be called from any thread. It
/// returns the change, or nullopt if it is not stored; the transaction around it must then be undone.
class RecordTransactionManagerProtocol : public virtual platform::Object {
public:
    using Queued = std::optional<Change>;

    std::weak_ptr<RecordTransactionManagerDelegate> delegate;

    virtual Queued addRecord(const Record& record, const Module& module) = 0;
    /// Queues the columns that the record has; one without a value clears the field at the server. The edit of a record
    /// whose add was refused becomes an add again, with what was refused beneath it.
    virtual Queued editRecord(const Record& record, const Module& module) = 0;
    virtual Queued deleteRecord(const std::string& recordID, const Module& module) = 0;
    /// Queues a file for a record. `fileURL` is its path, `recordID` the temporary id of the attachment's own row.
    virtual Queued uploadAttachment(const std::string& recordID, const std::string& parentID, const Module& module,
                                    const Module& relatedModule, const std::string& fileURL) = 0;
};

/// A front of the drain of a database, which sends what is queued here after the commit.
class RecordTransactionManager final : public RecordTransactionManagerProtocol {
public:
    /// `wake` is called after the commit of a change.
    RecordTransactionManager(const Stores& stores, std::function<void()> wake);

    Queued addRecord(const Record& record, const Module& module) override;
    Queued editRecord(const Record& record, const Module& module) override;
    Queued deleteRecord(const std::string& recordID, const Module& module) override;
    Queued uploadAttachment(const std::string& recordID, const std::string& parentID, const Module& module,
                            const Module& relatedModule, const std::string& fileURL) override;

private:
    Queued addEdit(const Record& record, const Module& module, TransactionType type);
    struct RefusedAdd {
        ValueMap payload;
        std::int64_t transactionNumber = 0;
    };
    std::optional<RefusedAdd> takeRefusedAdd(const std::string& recordId, const Module& module, bool& isStored);
    /// `transactionNumber` is that of the add in whose place the change goes, or 0.
    Queued addTransaction(Transaction transaction, const ValueMap& parameters, std::int64_t transactionNumber = 0);

    const Stores stores_;
    const std::shared_ptr<GetFieldListDM> fieldLists_;
    const std::function<void()> wake_;
    TransactionIds transactionIds_;
};

}  // namespace tarvo
