#pragma once

#include <string>

#include "soap/RequestRecord.h"

namespace quorbel {

/// The boolean rule of the service: true when the element is there and its text does not begin with "fals" in
/// any letter case, nor with "0". So "no", an empty element and a leading blank are true. An absent element
/// is false.
bool IsTrue(const RequestRecord& record, Slot slot);

/// Copies a value: an absent element empties `destination`, an empty one leaves it untouched.
void CopyValue(std::string& destination, const RequestRecord& record, Slot slot);

}  // namespace quorbel
