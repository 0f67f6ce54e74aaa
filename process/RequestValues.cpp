#include "process/RequestValues.h"

#include "util/StringRoutines.h"

namespace quorbel {

bool IsTrue(const RequestRecord& record, Slot slot) {
    if (!record.Has(slot)) return false;
    const char* text = record[slot]->data();
    return CompareNoCase(text, "fals", 4) != 0 && CompareNoCase(text, "0", 1) != 0;
}

void CopyValue(std::string& destination, const RequestRecord& record, Slot slot) {
    if (!record.Has(slot)) {
        destination.clear();
    } else if (const std::string_view text = record.Text(slot); !text.empty()) {
        destination = text;
    }
}

}  // namespace quorbel
