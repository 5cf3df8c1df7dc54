#pragma once

#include <string>

#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/notes/internal/VoiceFiles.h"
#include "tarvobase/record_changes/wire/ChangeAnswer.h"

namespace tarvo {

/// A voice note that is to be added on the server with its sound.
struct AddVoiceNoteNetworkParams {
    platform::Data data;  ///< the body: {"data": [payload]}
    std::string moduleName;
    std::string moduleAPI;
    std::string recordId;  ///< the id under which the sound lies here
    std::string key;       ///< the same UUID each time that this note is sent
};

class AddVoiceNoteNSP : public virtual platform::Object {
public:
    virtual void sendRequest(AddVoiceNoteNetworkParams with, ChangeCompletion completion) = 0;
};

/// Uploads voice notes as multipart forms. A sound that cannot be read is a refusal.
class AddVoiceNoteNS final : public BaseNetworkService, public AddVoiceNoteNSP {
public:
    explicit AddVoiceNoteNS(VoiceFiles files)
        : BaseNetworkService(CRMAPIs::Case::uploadVoiceNote), files_(std::move(files)) {}
    void sendRequest(AddVoiceNoteNetworkParams with, ChangeCompletion completion) override;

private:
    const VoiceFiles files_;
};

}  // namespace tarvo
