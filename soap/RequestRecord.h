#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "soap/Methods.h"
#include "util/TextBuffer.h"

namespace quorbel {

/// A text that several places may hold at once; null stands for an absent one.
using SharedText = std::shared_ptr<TextBuffer>;

inline std::string_view TextOf(const SharedText& text) {
    return text ? text->Text() : std::string_view();
}

/// A text for each slot. An absent text is not the same as an empty one: booleans tell them apart. Copies share
/// their texts, so a long one is held once however many records carry it.
class SlotTexts {
public:
    bool Has(Slot slot) const { return At(slot) != nullptr; }
    /// The slot's text; empty when it is absent.
    std::string_view operator[](Slot slot) const { return TextOf(At(slot)); }

    /// Throws std::bad_alloc.
    void Set(Slot slot, std::string_view text) { At(slot) = std::make_shared<TextBuffer>(text); }
    SharedText& At(Slot slot) { return texts_[static_cast<std::size_t>(slot)]; }
    const SharedText& At(Slot slot) const { return texts_[static_cast<std::size_t>(slot)]; }

private:
    std::array<SharedText, kSlotCount + 1> texts_;
};

/// Three texts that belong together: a response action or a custom field.
using TextTriple = std::array<SharedText, 3>;

/// Repeated items in document order: response actions (szResponse, szAction, bFinal) or custom fields
/// (szFieldName, szFieldValue, nothing). `count` runs with the end tags, so a nil item is counted as one
/// without members; the first kMaxKept of them are in `items`.
struct RequestItems {
    static constexpr std::size_t kMaxKept = 260;  ///< more than a command carries

    std::size_t count = 0;
    std::vector<TextTriple> items;

    /// The item that the next end tag will count; null for one that is not kept.
    TextTriple* Current() {
        if (count >= kMaxKept) return nullptr;
        if (items.size() <= count) items.resize(count + 1);
        return &items[count];
    }
    /// Counts an item that ended. A nil one counts too, as an item without members.
    void Count() {
        Current();
        ++count;
    }
};

/// What one SOAP request said, as text: every element fills its slot.
struct RequestRecord : SlotTexts {
    /// Whether the slot holds only the last of several pieces that an element's text came in.
    bool IsCut(Slot slot) const { return cut_.test(static_cast<std::size_t>(slot)); }
    void SetCut(Slot slot, bool isCut) { cut_.set(static_cast<std::size_t>(slot), isCut); }

    RequestItems responseActions;
    RequestItems customFields;

private:
    std::bitset<kSlotCount + 1> cut_;
};

}  // namespace quorbel
