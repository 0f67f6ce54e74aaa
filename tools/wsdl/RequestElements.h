#pragma once

#include <vector>

#include "soap/Methods.h"

namespace quorbel {

/// The elements of a method's request, in the order that keeps every one of them when a client sends them
/// without white space between.
///
/// The order is that of the tables: szURL and the credentials, the method's own elements, szURL2. Moved to
/// the end is what would swallow or cut off its successors; a method with such elements has no szURL2 when it
/// would be swallowed into them. Once published the order stays: it is also the order of the arguments of
/// generated code. Members of repeated items are not among them.
std::vector<Field> RequestElementsOf(const Method& method);

/// The members of the repeated item that `item` opens, out of its method's `fields`.
std::vector<Field> MembersOf(const Field& item, std::span<const Field> fields);

/// True for an element that takes what follows it, and so can be granted although its text was "false".
bool IsSticky(const Field& field);

/// How often a repeated item counts; 1 for any other element.
std::size_t MaxOccurs(const Field& field);

/// The XML Schema type of an element that is no item, with the prefix "xs".
std::string_view TypeOf(const Field& field);

}  // namespace quorbel
