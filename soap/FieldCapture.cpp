#include "FieldCapture.h"

#include "StringRoutines.h"

namespace {

/// Counts an item that ended. An end tag without a start counts too, as an item without members.
void CountItem(RequestItems& items) {
    items.Current();
    ++items.count;
}

/// The position of szURL in the common fields, whose capture the end of szURL2 stops.
constexpr std::size_t kUrlField = 0;

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
            if (rule.onData == OnData::Replace || !record_.Has(rule.slot)) record_[rule.slot].emplace();
            record_[rule.slot]->Append(text.data(), static_cast<int>(text.size()));
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
                FlagsOf(handler).reset(kUrlField);
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
