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

/// The contents of one entry of a metadata answer.
namespace tarvo {

/// The statements that create the tables of one module.
struct InfoTable {
    std::string moduleName;
    std::string table;  ///< creates the table of the records themselves
    std::optional<std::string> cvTable;
    std::optional<std::string> rlTable;
    std::optional<std::string> lookupTable;

    void readFrom(InfoReader& reader);
};

/// The header of an entry. It is unusable without a module, or with a table that lacks its module or statement, because
/// the rows could not be assigned. Times are milliseconds since 1970 by the server's clock, 0 if the server sends none.
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

/// The sections of an entry. A section that is missing (`noData`) or that cannot be read leaves the others usable. In a
/// section of row results each row may fail by itself.
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
