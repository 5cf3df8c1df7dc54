#include "tarvobase/download/FlaggedStep.h"

#include "platform/Log.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/network_layer/NetworkFailure.h"

namespace tarvo {

void FlaggedStep::execute(Callback success, Callback failure) {
    if (userDefaultsUtil_.isCompleted(flag())) return end({}, true);
    success_ = std::move(success);
    failure_ = std::move(failure);
    request([weak = platform::weakSelf(this)](NetworkAnswer answer) {
        if (auto self = weak.lock()) self->answered(answer);
    });
}

void FlaggedStep::answered(const NetworkAnswer& answer) {
    auto& error = answer.error;
    // The flag stays clear, and a run that is cut off must not be reported as one that has ended.
    if (error && error->kind == NetworkError::Kind::shutDown) return;
    if (error) {
        reportNetworkFailure(errorResponder, *error, scope_);
        return fail(std::string(bren::kindName(error->kind)));
    }
    if (!scope_.isCurrent()) {
        reportUnstored("the answer, which belongs to an account or database that is no longer in use,");
        return fail("its scope is outdated");
    }
    auto stored = store(answer.body);
    if (!stored) {
        if (auto responder = errorResponder.lock()) responder->parsingError();
        return fail(stored.error().logText());
    }
    if (!*stored) {
        reportUnstored("the answer");
        return fail("the database did not store the answer");
    }
    markStored();
    end(success_, true);
}

bool FlaggedStep::commit(platform::FunctionRef<void()> store) {
    auto& database = scope_.databaseAdapter;
    return database && scope_.isCurrent() && database->tolerantTransaction(flag(), [&] {
        store();
        return true;
    });
}

void FlaggedStep::fail(const std::string& why) {
    platform::log(platform::LogLevel::warning, "first download",
                  "the step " + flag() + " of the first download failed: " + why);
    end(failure_, false);
}

void FlaggedStep::end(const Callback& closure, bool status) {
    if (closure) closure();
    if (auto listener = delegate.lock()) listener->didComplete(*this, status);
}

}  // namespace tarvo
