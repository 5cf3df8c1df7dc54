#include "tarvobase/metadata/wire/MetadataWriter.h"

#include "platform/Log.h"
#include "platform/Text.h"

namespace tarvo {

namespace {

std::vector<std::string> statementsOf(const std::vector<InfoTable>& tables) {
    std::vector<std::string> statements;
    for (auto& one : tables)
        for (auto& statement : {std::optional(one.table), one.cvTable, one.rlTable, one.lookupTable})
            if (statement && !statement->empty()) statements.push_back(*statement);
    return statements;
}

/// Removes repeated tag columns. The table of all activities joins the columns of three modules, and each module
/// contributes one.
void keepFirstTagColumn(std::string& statement) {
    constexpr std::string_view column = " , Tag TEXT COLLATE NOCASE";
    auto first = statement.find(column);
    if (first == std::string::npos) return;
    auto rest = first + column.size();
    for (auto next = statement.find(column, rest); next != std::string::npos; next = statement.find(column, rest))
        statement.erase(next, column.size());
}

/// Logs what was left out of a section, once per section.
class SectionLog {
public:
    SectionLog(const std::string& module, std::string_view section) : module_(module), section_(section) {}
    void failed(const ParserError& error) const {
        // An absent section is not a failure: servers leave out what a module does not have.
        if (error.which() != ParserError::Case::noData) log("left out: " + error.logText());
    }
    void rowsFailed(std::size_t count, const ParserError& first) const {
        log(std::to_string(count) + " rows left out, the first: " + first.logText());
    }

private:
    void log(const std::string& what) const {
        platform::log(platform::LogLevel::warning, "metadata",
                      "metadata of " + module_ + ", " + std::string(section_) + ": " + what);
    }
    const std::string& module_;
    std::string_view section_;
};

template <class T, class Store>
void storeSection(const ParsedMetadata::Section<std::vector<T>>& section, const SectionLog& log, Store&& store) {
    if (!section) return log.failed(section.error());
    if (!section->empty()) store(*section);
}

/// Stores the rows that could be read.
template <class T, class Store>
void storeSection(const ParsedMetadata::Section<ParsedMetadata::RowResults<T>>& section, const SectionLog& log,
                  Store&& store) {
    if (!section) return log.failed(section.error());
    std::vector<T> rows;
    rows.reserve(section->size());
    std::optional<ParserError> firstError;
    for (auto& row : *section) {
        if (row)
            rows.push_back(*row);
        else if (!firstError)
            firstError = row.error();
    }
    if (firstError) log.rowsFailed(section->size() - rows.size(), *firstError);
    if (!rows.empty()) store(rows);
}

}  // namespace

bool MetadataWriter::store(const ParsedMetadataDetail& detail) const {
    auto& module = detail.info.moduleName;
    if (detail.info.tableList && !parsedTableCreationCommands(statementsOf(*detail.info.tableList), module))
        return false;
    if (detail.metadata)
        return persistance_.dbAdapter->tolerantTransaction("metadata of " + module, [&] {
            storeSections(*detail.metadata, module);
            return true;
        });
    SectionLog(module, "all sections").failed(detail.metadata.error());
    return true;
}

void MetadataWriter::storeSections(const ParsedMetadata& metadata, const std::string& module) const {
    auto settings = [this](auto& list) { persistance_.settingDAO->storeSettings(list); };
    auto fields = [this](auto& list) { persistance_.fieldsDAO->storeFieldMetadata(list); };
    storeSection(metadata.relatedList, {module, "related lists"},
                 [this](auto& lists) { persistance_.relatedListDAO->storeModuleRelatedList(lists); });
    storeSection(metadata.layouts, {module, "layouts"},
                 [this](auto& layouts) { persistance_.layoutDAO->storeModuleLayoutInfo(layouts); });
    storeSection(metadata.pickList, {module, "picklists"},
                 [this](auto& values) { persistance_.picklistDAO->storePicklistMetadata(values); });
    storeSection(metadata.layoutFields, {module, "fields of layouts"},
                 [this](auto& list) { persistance_.layoutFieldsDAO->storeLayoutMetadata(list); });
    storeSection(metadata.relatedListFields, {module, "columns of lists"}, settings);
    storeSection(metadata.fields, {module, "fields"}, fields);
    storeSection(metadata.relatedSort, {module, "order of related lists"}, settings);
    storeSection(metadata.dependentModuleFields, {module, "fields of dependent modules"}, fields);
}

bool MetadataWriter::parsedTableCreationCommands(std::vector<std::string> statements, const std::string& module) const {
    if (statements.empty()) return true;
    if (module == "Activities")
        for (auto& statement : statements) keepFirstTagColumn(statement);
    if (!persistance_.dbAdapter->createTables(statements)) return false;
    ModuleDatabaseConstants constants;
    return persistance_.secondaryDbAdapter->update(
        std::string(constants.TableName),
        ValueMap{{std::string(constants.TableCreationQuery), text::join(statements, "|")}},
        Criteria::equalTo(std::string(constants.ModuleName), module));
}

}  // namespace tarvo
