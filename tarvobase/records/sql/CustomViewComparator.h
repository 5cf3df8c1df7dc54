#pragma once

#include <string_view>

#include "platform/Describe.h"

namespace tarvo {

/// The comparators of view criteria, with the server's names.
enum class CustomViewComparator {
    equal,
    notEqual,
    like,
    notLike,
    greaterEqual,
    greaterThan,
    lessEqual,
    lessThan,
    in,
    notIn,
    startsWith,
    endsWith,
    contains,
    notContains,
    between,
    notBetween
};

template <>
struct EnumCases<CustomViewComparator> {
    using C = CustomViewComparator;
    static constexpr EnumCase<C> cases[] = {{C::equal, "equal"},
                                            {C::notEqual, "notEqual", "not_equal"},
                                            {C::like, "like"},
                                            {C::notLike, "notLike", "not_like"},
                                            {C::greaterEqual, "greaterEqual", "greater_equal"},
                                            {C::greaterThan, "greaterThan", "greater_than"},
                                            {C::lessEqual, "lessEqual", "less_equal"},
                                            {C::lessThan, "lessThan", "less_than"},
                                            {C::in, "in"},
                                            {C::notIn, "notIn", "not_in"},
                                            {C::startsWith, "startsWith", "starts_with"},
                                            {C::endsWith, "endsWith", "ends_with"},
                                            {C::contains, "contains"},
                                            {C::notContains, "notContains", "not_contains"},
                                            {C::between, "between"},
                                            {C::notBetween, "notBetween", "not_between"}};
};

constexpr std::string_view getEquivalentSqlComparator(CustomViewComparator comparator) {
    using C = CustomViewComparator;
    switch (comparator) {
        case C::equal:
            return "=";
        case C::notEqual:
            return "!=";
        case C::greaterEqual:
            return ">=";
        case C::greaterThan:
            return ">";
        case C::lessEqual:
            return "<=";
        case C::lessThan:
            return "<";
        case C::in:
            return "in";
        case C::notIn:
            return "not in";
        case C::notLike:
        case C::notContains:
            return "not like";
        case C::between:
            return "between";
        case C::notBetween:
            return "not between";
        default:
            return "like";
    }
}

constexpr bool isInLikeQueryList(CustomViewComparator comparator) {
    auto sql = getEquivalentSqlComparator(comparator);
    return sql == "like" || sql == "not like";
}
constexpr bool isInInQueryList(CustomViewComparator comparator) {
    return comparator == CustomViewComparator::in || comparator == CustomViewComparator::notIn;
}
/// Ranges take two values, and a template has one placeholder per value.
constexpr bool isRange(CustomViewComparator comparator) {
    return comparator == CustomViewComparator::between || comparator == CustomViewComparator::notBetween;
}

}  // namespace tarvo
