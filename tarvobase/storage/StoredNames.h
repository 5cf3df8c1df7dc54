#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/Describe.h"
#include "platform/Rows.h"

/// The names and members of a value object in its stored forms. A value has its members, its names and one list of
/// both:
///
///     struct CompanyInfoConstants : StoredNames<CompanyInfoConstants, CompanyInfo> {
///         std::string_view TableName = of("CompanyInfo", "COMPANY_DETAILS");
///         std::string_view Key = of("key", "company_key");   // the plain key and the column
///     };
///     struct CompanyInfoDatabaseConstants : TableTwin<CompanyInfoConstants> {};
///
///     struct CompanyInfo {
///         std::string key;
///
///         static constexpr auto fields() {
///             return describe(field("key", &CompanyInfo::key, &CompanyInfoConstants::Key));
///         }
///     };
///
/// Its source file, which includes StoredForm.h, has the conversions:
///
///     template struct StoredNames<CompanyInfoConstants, CompanyInfo>;
namespace tarvo {

/// The plain form has typed values under plain keys. The table form has columns, with booleans and integers as text.
enum class Form { plain, table };

/// Base of all lists of stored names. Each member is declared with its plain key and its column, and the form selects
/// one of them.
struct NamesInForm {
    Form form = Form::plain;

    constexpr std::string_view of(std::string_view key, std::string_view column) const {
        return form == Form::table ? column : key;
    }
    constexpr std::string_view of(std::string_view both) const { return both; }
};

/// Base of the constants class `Names` of a value `T`, with the conversions by the value's stored fields. With
/// `Result<T, std::string>` as `Read`, reading fails with the name of the first required member that is absent or
/// mistyped. Otherwise every map can be read, and such a member keeps the value of a new object.
template <class Names, class T, class Read = T>
struct StoredNames : NamesInForm {
    /// Optional members that are absent are left out, and so are members without a column.
    ValueMap getDictionary(const T& value) const;
    Read getValue(const ValueMap& map) const;
    Read getValue(const Row& row) const;

private:
    const Names& names() const { return static_cast<const Names&>(*this); }
    template <class Source>
    Read valueOf(const Source& source) const;
};

/// The names of `Names` in the form of the table.
template <class Names>
struct TableTwin : Names {
    constexpr TableTwin() : Names{Form::table} {}
};

/// A codec for `fieldBy`: binds an integer, or the raw integer of an enumeration, as an integer in both forms. It is
/// for columns that statements sort and compare by. Other programs stored them as text, so both are read.
template <class T>
struct IntegerCodec;

/// A stored member that also has a column in the positional rows of the server.
template <class Stored>
struct PlacedField : Stored {
    std::size_t place = 0;
};

/// A member that is stored, with the name of its key and the codec that writes and reads it (`void` stands for the one
/// of its type).
template <class Owner, class Member, class Names, class Codec = void>
struct StoredField : Field<Owner, Member> {
    std::string_view Names::*key = nullptr;
    bool isRequired = false;
    bool isTableOnly = false;

    /// Marks a member without which there is no value, unless reading is lenient.
    constexpr StoredField required() const {
        auto field = *this;
        field.isRequired = true;
        return field;
    }
    /// Adds the column in the server's positional rows, from which `PositionalRow::fill` reads the member. It is the
    /// last call in a line.
    constexpr PlacedField<StoredField> at(std::size_t column) const { return {*this, column}; }
    /// Marks a member that the plain form does not write. Reading looks for it in both forms.
    constexpr StoredField tableOnly() const {
        auto field = *this;
        field.isTableOnly = true;
        return field;
    }
};

template <class Owner, class Member, class Names>
constexpr StoredField<Owner, Member, Names> field(std::string_view name, Member Owner::*pointer,
                                                  std::string_view Names::*key) {
    return {{name, pointer}, key};
}

/// Declares a stored member with a codec of its own, which has `write(member, form)` and `read(view, form)` as
/// `MemberCodec` does.
template <class Codec, class Owner, class Member, class Names>
constexpr StoredField<Owner, Member, Names, Codec> fieldBy(std::string_view name, Member Owner::*pointer,
                                                           std::string_view Names::*key) {
    return {{name, pointer}, key};
}

/// Is satisfied by the fields of a list that are stored.
template <class F>
concept IsStoredField = requires(const F& field) {
    field.key;
};

}  // namespace tarvo
