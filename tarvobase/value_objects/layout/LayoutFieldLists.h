#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/layout/LayoutFieldList.h"

/// The three shapes of a layout. Each is filled by one walk over the layout's rows in display order. If two rows have
/// the same identifier, or two sections the same name, the first one is found by it. Pointers into a shape are valid as
/// long as it lives unchanged.
namespace tarvo {

/// Walks rows in display order. Calls `list.openSection(row)` for the first row of each section and `list.add(row)` for
/// every row. A section ends where the member `key` changes.
template <class Key, class List>
void walkLayout(std::vector<LayoutMetadata> rows, Key LayoutMetadata::*key, List& list) {
    std::optional<Key> section;
    for (auto& row : rows) {
        if (section != row.*key) {
            section = row.*key;
            list.openSection(row);
        }
        list.add(std::move(row));
    }
}

/// The fields in display order, without sections.
class OrderedLayoutFieldList final : public LayoutFieldList {
public:
    using LayoutFieldList::LayoutFieldList;

    OrderedDictionary<std::string, LayoutMetadata> orderedFields;

    void openSection(const LayoutMetadata&) {}
    void add(LayoutMetadata row);

    const LayoutMetadata* getField(const std::string& identifier) const override;
    std::vector<const LayoutMetadata*> layoutFields() const override;
};

/// A section with its fields.
struct GroupedLayoutSection {
    std::string name;
    std::string displayLabel;
    int sequence = 0;
    bool isSubform = false;
    std::vector<LayoutMetadata> fields;
};

/// The sections with their fields.
class GroupedLayoutFieldList final : public LayoutFieldList {
public:
    using LayoutFieldList::LayoutFieldList;

    struct Place {
        std::size_t section;
        std::size_t field;
    };
    std::vector<GroupedLayoutSection> sections;
    std::unordered_map<std::string, std::size_t> sectionsIndexMap;
    std::unordered_map<std::string, Place> fieldIdentifierMap;

    void openSection(const LayoutMetadata& first);
    void add(LayoutMetadata row);

    /// Returns null if there is no such section.
    const GroupedLayoutSection* getSection(const std::string& name) const;
    const LayoutMetadata* getField(const std::string& identifier) const override;
    std::vector<const LayoutMetadata*> layoutFields() const override;
};

/// A section as a header.
struct LinearLayoutSection {
    std::string name;
    std::string displayLabel;
    int sequence = 0;
    bool isSubform = false;

    friend bool operator==(const LinearLayoutSection&, const LinearLayoutSection&) = default;
};

/// A line of a table view: a section's header or a field.
class LinearLayoutItem {
public:
    static LinearLayoutItem header(LinearLayoutSection section) { return LinearLayoutItem(std::move(section)); }
    static LinearLayoutItem item(LayoutMetadata metadata) { return LinearLayoutItem(std::move(metadata)); }

    /// Returns the field, or null for a header.
    const LayoutMetadata* metadata() const { return std::get_if<LayoutMetadata>(&value_); }
    /// Returns the header, or null for a field.
    const LinearLayoutSection* section() const { return std::get_if<LinearLayoutSection>(&value_); }
    std::string debugDescription() const;

private:
    explicit LinearLayoutItem(std::variant<LinearLayoutSection, LayoutMetadata> value) : value_(std::move(value)) {}
    std::variant<LinearLayoutSection, LayoutMetadata> value_;
};

/// The headers and fields in one list, as a table view shows them.
class LinearLayoutFieldList final : public LayoutFieldList {
public:
    using LayoutFieldList::LayoutFieldList;

    std::vector<LinearLayoutItem> fields;
    std::unordered_map<std::string, std::size_t> fieldIdentifierMap;    ///< places in `fields`
    std::unordered_map<std::string, std::size_t> sectionIdentifierMap;  ///< places of the headers

    void openSection(const LayoutMetadata& first);
    void add(LayoutMetadata row);

    std::vector<LinearLayoutSection> allSections() const;
    /// Returns null if there is no such section.
    const LinearLayoutSection* getSection(const std::string& name) const;
    const LayoutMetadata* getField(const std::string& identifier) const override;
    std::vector<const LayoutMetadata*> layoutFields() const override;
};

/// The older form of a line: a section's sequence and name, or a field.
class LinearLayoutMetadataItemType {
public:
    struct Header {
        int sequence = 0;
        std::string name;
        friend bool operator==(const Header&, const Header&) = default;
    };
    static LinearLayoutMetadataItemType header(int sequence, std::string name) {
        return LinearLayoutMetadataItemType(Header{sequence, std::move(name)});
    }
    static LinearLayoutMetadataItemType item(LayoutMetadata metadata) {
        return LinearLayoutMetadataItemType(std::move(metadata));
    }

    /// `header` returns null for a field, and `item` returns null for a header.
    const Header* header() const { return std::get_if<Header>(&value_); }
    const LayoutMetadata* item() const { return std::get_if<LayoutMetadata>(&value_); }

private:
    explicit LinearLayoutMetadataItemType(std::variant<Header, LayoutMetadata> value) : value_(std::move(value)) {}
    std::variant<Header, LayoutMetadata> value_;
};

}  // namespace tarvo
