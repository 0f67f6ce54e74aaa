#pragma once

#include <string>

#include "soap/Methods.h"

namespace quorbel {

/// The form of the service page that sends one method: an input for each element in the order in which it is sent, the
/// envelope as it is typed, and the place of the answer. Hidden until the page's script runs.
std::string MethodForm(const Method& method);

/// How much of an element's text arrives; empty when only the general limit holds.
std::string LimitOf(const Method& method, const Field& rule);

}  // namespace quorbel
