#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/network_layer/ResultInfo.h"
#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/PicklistMetadata.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfo.h"
#include "tarvobase/value_objects/module/RelatedList.h"
#include "tarvobase/value_objects/module/Settings.h"

/// What one entry of a metadata answer holds.
namespace tarvo {

/// The statements that create the tables of one module.
struct InfoTable {
    std::string moduleName;
    std::string table;  ///< of the records themselves
    std::optional<std::string> cvTable;
    std::optional<std::string> rlTable;
    std::optional<std::string> lookupTable;

    void readFrom(InfoReader& reader);
};

/// The header of an entry. Without a module, or with a table that lacks its module or statement, it is unusable: nobody
/// could say what the rows belong to. Times are milliseconds since 1970 by the server's clock, 0 when it does not tell.
struct ParsedMetadataInfo {
    std::string moduleName;
    std::uint64_t serverTime = 0;
    std::optional<std::vector<InfoTable>> tableList;
    std::uint64_t responseTime = 0;
    bool nodata = false;

    void readFrom(InfoReader& reader);
};

/// The header of an entry that brings one kind of rows of a module, such as its permissions. Unusable without a module.
struct ParsedPermissionInfo {
    std::string moduleName;
    std::uint64_t serverTime = 0;
    std::optional<std::uint64_t> responseTime;
    std::optional<bool> nodata;

    void readFrom(InfoReader& reader);
};

/// The sections of an entry. Each stands by itself: a section that is missing (`noData`), or that cannot be read,
/// leaves the others usable. Where a section holds results, so does each of its rows.
struct ParsedMetadata {
    template <class T>
    using Section = Result<T, ParserError>;
    template <class T>
    using RowResults = std::vector<Result<T, ParserError>>;

    Section<std::vector<RelatedList>> relatedList = ParserError(ParserError::Case::noData);
    Section<std::vector<ModuleLayoutInfo>> layouts = ParserError(ParserError::Case::noData);
    Section<RowResults<LayoutFieldData>> layoutFields = ParserError(ParserError::Case::noData);
    Section<RowResults<PicklistMetadata>> pickList = ParserError(ParserError::Case::noData);
    /// Columns of the module's card and of its rows in related lists.
    Section<std::vector<Settings>> relatedListFields = ParserError(ParserError::Case::noData);
    Section<RowResults<FieldMetadata>> fields = ParserError(ParserError::Case::noData);
    /// Fields of other modules that this one depends on; each names its own module.
    Section<RowResults<FieldMetadata>> dependentModuleFields = ParserError(ParserError::Case::noData);
    /// The order of the module's rows in related lists.
    Section<std::vector<Settings>> relatedSort = ParserError(ParserError::Case::noData);
};

struct ParsedMetadataDetail {
    Result<ParsedMetadata, ParserError> metadata;
    ParsedMetadataInfo info;
};

}  // namespace tarvo
