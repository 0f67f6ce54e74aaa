#include "soap/FieldCapture.h"

#include <algorithm>
#include <new>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

/// Counts an item that ended. A nil one counts too, as an item without members.
void CountItem(RequestItems& items) {
    items.Current();
    ++items.count;
}

/// A text that no longer fits into memory fails the request: a page must not go out without its text.
void StoreText(std::optional<TextBuffer>& slot, OnData onData, std::string_view text) {
    if (onData == OnData::Replace || !slot) slot.emplace();
    if (!text.empty() && !slot->Append(text.data(), static_cast<int>(text.size()))) throw std::bad_alloc();
}

/// The position of szURL in the common fields, whose capture the end of szURL2 stops.
std::size_t UrlField() {
    const auto rules = FieldsOf(FieldHandler::Common);
    return static_cast<std::size_t>(
        std::find_if(rules.begin(), rules.end(),
                     [](const FieldRule& rule) { return rule.slot == Slot::Url; }) -
        rules.begin());
}

}  // namespace

void FieldCapture::Start(FieldHandler handler, std::string_view element, bool isNil) {
    if (isNil) return;
    const auto rules = FieldsOf(handler);
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (!EndsWithNoCase(element, rules[i].element)) continue;
        FlagsOf(handler).set(i);
        Begin(rules[i]);
    }
}

void FieldCapture::Begin(const FieldRule& rule) {
    if (rule.kind == FieldKind::ResponseAction) {
        insideResponseAction_ = true;
        record_.responseActions.Current() = {};
    } else if (rule.kind == FieldKind::CustomField) {
        insideCustomField_ = true;
        record_.customFields.Current() = {};
    } else if (rule.kind == FieldKind::Text && !record_.Has(rule.slot)) {
        record_[rule.slot].emplace();  // present though empty: an empty boolean is true, an absent one false
    }
}

void FieldCapture::Data(FieldHandler handler, std::string_view text) {
    const Flags& flags = FlagsOf(handler);
    if (flags.none()) return;
    const auto rules = FieldsOf(handler);
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (flags.test(i)) Store(rules[i], text);
    }
}

void FieldCapture::Store(const FieldRule& rule, std::string_view text) {
    switch (rule.kind) {
        case FieldKind::Text:
            StoreText(record_[rule.slot], rule.onData, text);
            break;
        case FieldKind::ResponseActionPart:
            StorePart(insideResponseAction_, record_.responseActions, rule, text);
            break;
        case FieldKind::CustomFieldPart:
            StorePart(insideCustomField_, record_.customFields, rule, text);
            break;
        case FieldKind::ResponseAction:
        case FieldKind::CustomField:
            break;  // text of the wrapper itself
    }
}

void FieldCapture::StorePart(bool insideItem, RequestItems& items, const FieldRule& rule,
                             std::string_view text) {
    if (insideItem) items.Current()[rule.part].emplace(text);
}

void FieldCapture::End(FieldHandler handler, std::string_view element) {
    const auto rules = FieldsOf(handler);
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (!EndsWithNoCase(element, rules[i].element)) continue;
        switch (rules[i].onEnd) {
            case OnEnd::StopCapture:
                FlagsOf(handler).reset(i);
                break;
            case OnEnd::StopUrlCapture:
                FlagsOf(handler).reset(UrlField());
                break;
            case OnEnd::KeepCapturing:
                FlagsOf(handler).set(i);
                break;
        }
        Finish(rules[i]);
    }
}

void FieldCapture::Finish(const FieldRule& rule) {
    if (rule.kind == FieldKind::ResponseAction) {
        insideResponseAction_ = false;
        CountItem(record_.responseActions);
    } else if (rule.kind == FieldKind::CustomField) {
        insideCustomField_ = false;
        CountItem(record_.customFields);
    }
}

}  // namespace quorbel
