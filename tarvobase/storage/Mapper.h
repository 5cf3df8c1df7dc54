#pragma once

#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "platform/Result.h"
#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

/// The reason why a map cannot be read as a value.
struct ParsingError {
    std::string failedPath;  ///< key of the first member that is missing or of another type
    friend bool operator==(const ParsingError&, const ParsingError&) = default;
};

/// Converts strictly between a value and a map: a missing or mistyped member fails the value. A mapper is a constants
/// object (keys, and the `tableName`) whose `getValue` and `getDictionary` take the keys from the object; its table
/// twin derives from it and has columns in place of keys.
///
/// `Derived` implements `getValue(const ValueMap&)` and `getDictionary(const T&)`; the list operations are shared.
template <class Derived, class T>
struct Mapper : NamesInForm {
    using MappedType = T;

    /// Returns the values of the maps that can be read, and leaves the others out.
    std::vector<T> getValue(const std::vector<ValueMap>& maps) const {
        std::vector<T> values;
        values.reserve(maps.size());
        for (auto& map : maps)
            if (Result<T, ParsingError> value = self().getValue(map)) values.push_back(std::move(value).value());
        return values;
    }
    std::vector<ValueMap> getDictionary(const std::vector<T>& values) const {
        std::vector<ValueMap> maps;
        maps.reserve(values.size());
        for (auto& value : values) maps.push_back(self().getDictionary(value));
        return maps;
    }

private:
    const Derived& self() const { return static_cast<const Derived&>(*this); }
};

/// A mapper by the stored fields of the value, in its own form. The value's source file makes the conversions:
///
///     template struct StoredMapper<TransactionMapper, NTransaction>;
template <class Names, class T>
struct StoredMapper : Mapper<Names, T> {
    using Mapper<Names, T>::getDictionary;
    using Mapper<Names, T>::getValue;
    Result<T, ParsingError> getValue(const ValueMap& map) const;
    Result<T, ParsingError> getValue(const Row& row) const;
    ValueMap getDictionary(const T& value) const;

private:
    const Names& names() const { return static_cast<const Names&>(*this); }
};

/// The operations on which code that is generic over mappers may rely.
template <class M>
concept MapperType = requires(const M& mapper, const ValueMap& map, const typename M::MappedType& value) {
    { mapper.tableName } -> std::convertible_to<std::string_view>;
    { mapper.getValue(map) } -> std::same_as<Result<typename M::MappedType, ParsingError>>;
    { mapper.getDictionary(value) } -> std::same_as<ValueMap>;
};

template <Described T>
class StoredForm;

/// Reads a value strictly through its stored form. The source file includes StoredForm.h.
template <class T, class Source, class Names>
Result<T, ParsingError> strictly(const Source& source, const Names& names, Form form) {
    auto read = StoredForm<T>::readStrictly(source, names, form);
    return read ? Result<T, ParsingError>(std::move(read).value())
                : Result<T, ParsingError>(ParsingError{read.error()});
}

}  // namespace tarvo
