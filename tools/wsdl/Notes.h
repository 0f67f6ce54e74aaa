#pragma once

#include "soap/Methods.h"

namespace quorbel {

// What a user of the service must know and cannot see from names and types. Toolkits show these texts beside
// the generated code.

/// For the service as a whole: how values travel.
std::string_view ServiceNote();

/// What a method does; every method has one.
std::string_view NoteOf(const Method& method);

/// What to mind about an element; empty when its name says it all.
std::string_view NoteOf(const Field& element);

}  // namespace quorbel
