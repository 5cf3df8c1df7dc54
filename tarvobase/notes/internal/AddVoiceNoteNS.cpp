#include "tarvobase/notes/internal/AddVoiceNoteNS.h"

#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/network_layer/TypedReads.h"
#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"
#include "tarvobase/record_changes/wire/NetworkParamConstant.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

/// Returns the name under which the server keeps the sound: the title of the note, or a general one. A name cannot have
/// zero bytes: the request would never be sent, and hold up what comes after it.
std::string uploadedNameOf(const platform::Data& data) {
    std::string extension(rawText(VoiceNoteConstants::fileExtension));
    auto body = json::parse(data);
    auto map = body ? body->asMap() : nullptr;
    auto notes = map ? readKey<ValueList>(*map, "data") : std::nullopt;
    auto note = notes ? readIndex<ValueMap>(*notes, 0) : std::nullopt;
    auto title = note ? note->valueOf(FieldAPIConstant.Notes.noteTitle).textOr("") : std::string();
    std::erase(title, '\0');
    return (title.empty() ? std::string(rawText(VoiceNoteConstants::fileName)) : title) + extension;
}

}  // namespace

void AddVoiceNoteNS::sendRequest(AddVoiceNoteNetworkParams with, ChangeCompletion completion) {
    std::optional<ValueMap> params(std::in_place);
    params->set(NetworkParamConstant::AddEditRecord::module, with.moduleName);
    params->set(NetworkParamConstant::AddEditRecord::moduleAPI, with.moduleAPI);
    std::string json(with.data.text());
    if (text::isValidUtf8(json)) params->set("dataJSON", std::move(json));
    service::addOrganisation(params, *orgsPersistance);
    bren::Headers headers;
    headers.set(NetworkParamConstant::transactionIdHeader, with.key);
    // Uploads do not name the organisation by themselves, and this one must not reach another.
    if (!scope().organisation.empty()) headers.set(service::HEADER_ORGID, scope().organisation);
    upload({.url = baseURL,
            .headers = std::move(headers),
            .params = *std::move(params),
            .source = files_.pathOf(with.recordId).value_or(""),
            .fileParamName = "file",
            .fileName = uploadedNameOf(with.data),
            .completionHandler = [completion = std::move(completion)](NetworkAnswer answer) {
                completion(ChangeAnswerParser::ofAddedNote(answer));
            }});
}

}  // namespace tarvo
