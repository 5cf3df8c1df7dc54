#include "kelva_db/internal/Access.h"

#include "kelva_db/internal/Sqlite.h"

namespace kelva {

namespace {

thread_local Access* innermost = nullptr;

/// Carries a request to roll back out of a savepoint.
struct RollbackWish {};

}  // namespace

Access::Access(const void* owner, Connection& connection, Kind kind)
    : owner_(owner), connection_(connection), kind_(kind), outer_(innermost) {
    innermost = this;
}

Access::~Access() { innermost = outer_; }

Access* Access::find(const void* owner) {
    auto access = innermost;
    while (access && (access->owner_ != owner || access->kind_ == Kind::observing)) access = access->outer_;
    return access;
}

bool Access::isInside(const void* owner) {
    auto access = innermost;
    while (access && access->owner_ != owner) access = access->outer_;
    return access != nullptr;
}

void Access::read(KelvaDatabase::Block block) const {
    Access inner(owner_, connection_, Kind::reading);
    Connection::Writability readOnly(connection_, false);
    block(connection_.database());
}

void Access::transaction(KelvaDatabase::TransactionBlock block) const {
    if (kind_ == Kind::reading) throwError(FailureKind::misuse, "a write was begun inside a read");
    try {
        connection_.inSavepoint([&] {
            if (block(connection_.database()) == TransactionCompletion::rollback) throw RollbackWish();
        });
    } catch (const RollbackWish&) {
    }
}

void requireOutside(const void* owner, const char* what) {
    if (Access::isInside(owner))
        throwError(FailureKind::misuse, std::string(what) + " inside a block of the same database");
}

}  // namespace kelva
