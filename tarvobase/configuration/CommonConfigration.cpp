#include "tarvobase/configuration/CommonConfigration.h"

#include "platform/ProcessState.h"
#include "platform/ProgrammingError.h"

namespace tarvo {

CommonConfigration& CommonConfigration::sharedInstance() {
    return platform::ProcessState::current().get<CommonConfigration>();
}

CommonConfigration::CommonConfigration()
    // The domain is a reserved one, so that a host that forgets to name its server reaches nobody.
    : dclBD("crm.example"), fieldIdentifier(FieldIdentifier::crmColumnNameIdentifier()) {}

std::optional<std::string> CommonConfigration::getCurrentAccountID() const {
    if (auto source = currentAccountIDSource.get()) return source();
    auto signedIn = authentication.get();
    return signedIn ? signedIn->currentUser() : std::nullopt;
}

std::string CommonConfigration::voiceFileDirectoryLocation() {
    if (auto kept = voiceFileDirectory_.get()) return *kept;
    auto root = localDirectoryLocation.get();
    if (!root) {
        platform::reportProgrammingError("voiceFileDirectoryLocation was called before localDirectoryLocation was set");
        return "VoiceNotes/";
    }
    voiceFileDirectory_ = *root + "/VoiceNotes/";
    return *voiceFileDirectory_.get();
}

}  // namespace tarvo
