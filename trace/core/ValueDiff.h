#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kinora::trace {

/// One place where two recorded values differ.
struct ValueDifference {
    /// The way to it through the lists, with indices from 0, and the names it stands under there: " [3][1] (NAME:gap,
    /// Value:=)". Empty for the value itself.
    std::string place;
    /// The two values in words, shortened as long as their difference can be seen.
    std::string was;
    std::string is;
};

/// True for values that are the same but for the numbers of their objects, which depend on everything that came before.
bool IsSameValue(const nlohmann::json& one, const nlohmann::json& other);

/// Where two values differ: lists are compared element by element, one that is missing is "nothing".
/// @param isFull  whole lists and texts
/// @return empty for values that are the same
std::vector<ValueDifference> ValueDifferences(const nlohmann::json& was, const nlohmann::json& is, bool isFull);

} // namespace kinora::trace
