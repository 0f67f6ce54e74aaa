#pragma once

#include <array>
#include <bitset>
#include <string_view>

#include "soap/FieldRules.h"

namespace quorbel {

/// Moves the text of elements into a request record: which fields are being captured, and what the start, the
/// text and the end of an element do to them. One object serves one envelope; flags that a method leaves set
/// are still set when a second method of the same envelope starts.
class FieldCapture {
public:
    /// `record` must outlive this object.
    explicit FieldCapture(RequestRecord& record) : record_(record) {}

    void Start(FieldHandler handler, std::string_view element, bool isNil);
    void Data(FieldHandler handler, std::string_view text);
    void End(FieldHandler handler, std::string_view element);

private:
    using Flags = std::bitset<kMaxFields>;

    Flags& FlagsOf(FieldHandler handler) { return flags_[static_cast<std::size_t>(handler)]; }
    void Begin(const FieldRule& rule);
    void Store(const FieldRule& rule, std::string_view text);
    void StorePart(bool insideItem, RequestItems& items, const FieldRule& rule, std::string_view text);
    void Finish(const FieldRule& rule);

    RequestRecord& record_;
    std::array<Flags, kFieldHandlerCount> flags_;
    bool insideResponseAction_ = false;
    bool insideCustomField_ = false;
};

}  // namespace quorbel
