#include "host/commands/ShowCommand.h"

#include <algorithm>

#include "bridge/forms/RecordForms.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "host/commands/RecordText.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/list_view/GetRecordsUseCase.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForRecord = "--token is required to sign in and fetch what is not stored";

struct Entry {
    std::string label, apiName, column, text;
    static constexpr auto fields() {
        return describe(field("label", &Entry::label), field("apiName", &Entry::apiName),
                        field("column", &Entry::column), field("text", &Entry::text));
    }
};
struct ShownSection {
    std::string name;
    std::vector<Entry> entries;
    static constexpr auto fields() {
        return describe(field("name", &ShownSection::name), field("fields", &ShownSection::entries));
    }
};

/// A record, or the failure of the request. If both are absent, the server has no such record.
struct ServerAnswer {
    std::optional<Record> record{};
    std::optional<CommonErrorNotice> failure{};
};

class RecordListener final : public CommonErrorRelay, public GetRecordsErrorRelay, public GetRecordsUseCaseDelegate {
public:
    explicit RecordListener(std::function<void(ServerAnswer)> answered) : answered_(std::move(answered)) {}

    /// The first of the two notices is for the stored record, which was found missing before.
    void record(const std::optional<Record>& record, const std::string&, const Module&, const Value&) override {
        if (std::exchange(hasLocalAnswer_, true)) answered_({.record = record});
    }
    using GetRecordsUseCaseDelegate::record;

private:
    void relay(const CommonErrorNotice& notice) override { answered_({.failure = notice}); }
    void relay(const GetRecordsErrorRelay::Notice&) override { answered_({}); }

    const std::function<void(ServerAnswer)> answered_;
    bool hasLocalAnswer_ = false;
};

std::optional<ServerAnswer> askServer(const Module& module, const std::string& id) {
    return awaited<ServerAnswer>([&](auto answered) {
        auto usecase = GetRecordsUseCase::make();
        auto listener = std::make_shared<RecordListener>(answered);
        usecase->delegate = listener;
        usecase->getRecord(module, id);
        return std::make_shared<std::pair<std::shared_ptr<GetRecordsUseCase>, std::shared_ptr<RecordListener>>>(
            usecase, listener);
    });
}

Result<Record, int> recordOf(Host& host, const Arguments& arguments) {
    if (auto stored = RecordInDatabase::make(host.database())->fetchRecord(arguments.module, arguments.recordId))
        return *std::move(stored);
    auto missing = "no record " + arguments.recordId + " of " + arguments.module + " is stored";
    if (!arguments.token) return fail(missing + "; --token is required to ask the server", 2);
    auto module = Stores::current().modules()->getModuleByModuleName(arguments.module);
    auto answer = module ? askServer(*module, arguments.recordId) : std::nullopt;
    if (answer && answer->record) return *answer->record;
    if (!answer) return fail(missing + ", and the server did not answer in time");
    if (!answer->failure) return fail(missing + ", and the server has none");
    return fail(missing + ", and " + explanationOf(*answer->failure));
}

/// Returns the record's own layout, or the module's default, or any that the profile may use; null if there are none.
const Layout<OrderedLayoutFieldList>* layoutOf(const Record& record, const StoredLayouts& layouts) {
    auto own = record.getString(FieldIdentifierConstants().layout);
    auto at = std::find_if(layouts.begin(), layouts.end(), [&](auto& one) { return one.layoutID == own; });
    auto isOffered = [](auto& one) { return one.isAccessible; };
    auto isOfferedDefault = [](auto& one) { return one.isAccessible && one.isDefault; };
    if (at == layouts.end()) at = std::find_if(layouts.begin(), layouts.end(), isOfferedDefault);
    if (at == layouts.end()) at = std::find_if(layouts.begin(), layouts.end(), isOffered);
    return at == layouts.end() ? nullptr : &*at;
}

/// Returns the fields that have a value, by section; without a layout in one section.
std::vector<ShownSection> sectionsOf(const Record& record, const FieldList& fields, const StoredLayouts& layouts) {
    std::vector<ShownSection> sections;
    auto add = [&](const std::string& section, const FieldMetadata& field) {
        auto text = readableText(record, field, fields);
        if (text.empty()) return;
        if (sections.empty() || sections.back().name != section) sections.push_back({section, {}});
        sections.back().entries.push_back(
            {field.fieldLabel, field.fieldAPIName, fields.identifierOf(field), std::move(text)});
    };
    if (auto layout = layoutOf(record, layouts))
        for (auto row : layout->metadata.layoutFields())
            add(row->sectionDV.empty() ? row->sectionName : row->sectionDV, *row);
    else
        for (auto field : fields.allFields()) add("All fields", *field);
    return sections;
}

std::string forPeople(const Record& record, const std::vector<ShownSection>& sections, const std::string& path) {
    // One table over all sections aligns the values.
    std::vector<std::vector<std::string>> rows;
    for (auto& section : sections)
        for (auto& entry : section.entries) rows.push_back({entry.label, entry.text});
    auto lines = text::split(tableText(rows), "\n");
    auto next = lines.begin();
    std::string text = tableText({{record.moduleName() + " " + record.recordId()}});
    for (auto& section : sections) {
        text += "\n" + tableText({{section.name}});
        for (std::size_t i = 0; i < section.entries.size(); ++i) text += "  " + *next++ + "\n";
    }
    return text + "\nRead from the encrypted database " + path + "\n";
}

}  // namespace

int showRecord(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForRecord)) return *status;
    auto fields = neededFields(host, arguments, tokenNeededForRecord);
    if (!fields) return fields.error();
    auto record = recordOf(host, arguments);
    if (!record) return record.error();
    auto sections = sectionsOf(*record, *fields, storedLayouts(arguments.module));
    if (!arguments.json) return printForPeople(forPeople(*record, sections, *path));
    ValueMap map{{"record", bridge::toJson(*record)},
                 {"sections", bridge::toJson(sections)},
                 {"database", bridge::toJson(*path)}};
    return printForPrograms(json::write(map).value_or("") + "\n");
}

}  // namespace tarvo::host
