#include "soap/FieldCapture.h"

#include <algorithm>
#include <new>

#include "util/StringRoutines.h"

namespace quorbel {

namespace {

/// The position of the first field for which `holds`; the number of fields when there is none.
template <typename Condition>
std::size_t Find(std::span<const Field> fields, Condition holds) {
    return static_cast<std::size_t>(std::find_if(fields.begin(), fields.end(), holds) - fields.begin());
}

template <typename Action>
void ForMatches(std::span<const Field> fields, const TagName& element, Action action) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (element.EndsWith(fields[i].element)) action(i);
    }
}

/// The field whose capture the end of szURL2 stops.
std::size_t UrlField() {
    return Find(CommonFields(), [](const Field& field) { return field.slot == Slot::Url; });
}

}  // namespace

void FieldCapture::Open(const Method& method) {
    const int owner = method.flagsOf == 0 ? method.code : method.flagsOf;
    auto& group = groups_[static_cast<std::size_t>(owner - kFirstMethodCode)];
    if (!group) group = std::make_unique<Group>();
    own_ = group.get();
    own_->fields = method.fields;
    const std::size_t whole =
        Find(method.fields, [](const Field& field) { return field.onData == OnData::Append; });
    own_->whole = whole < method.fields.size() ? whole : kMaxFields;
    // Flags that an earlier method left set count again, for what comes now.
    common_.taken.fill(count_);
    own_->taken.fill(count_);
}

void FieldCapture::Close() {
    for (Group* group : {&common_, own_}) {
        for (std::size_t i = 0; i < group->fields.size(); ++i) HandOver(*group, i);
    }
}

void FieldCapture::Start(const TagName& element, Nil nil) {
    if (nil == Nil::Always) return;
    for (Group* group : {&common_, own_}) {
        ForMatches(group->fields, element, [&](std::size_t field) {
            Capture(*group, field);
            BeginField(group->fields[field], nil);
        });
    }
}

void FieldCapture::BeginField(const Field& field, Nil nil) {
    if (IsItem(field)) {
        BeginItem(ItemsOf(field));
    } else if (field.kind == FieldKind::Text && nil == Nil::No && !record_.Has(field.slot)) {
        record_.Set(field.slot, "");  // present though empty: an empty boolean is true, an absent one false
    }
}

void FieldCapture::Data(std::string_view text) {
    const bool isWhole = own_->captured.test(own_->whole);
    if (isWhole) AppendWhole(text);
    if (common_.captured.any() || own_->captured.count() > (isWhole ? 1U : 0U)) KeepPiece(text);
}

/// A text that no longer fits into memory fails the request: a page must not go out without its text.
void FieldCapture::AppendWhole(std::string_view text) {
    const Slot slot = own_->fields[own_->whole].slot;
    if (!record_.Has(slot)) record_.Set(slot, "");
    if (!record_.At(slot)->Append(text.data(), static_cast<int>(text.size()))) throw std::bad_alloc();
}

void FieldCapture::KeepPiece(std::string_view text) {
    ++count_.pieces;
    isPiecePrinted_ = !std::all_of(text.begin(), text.end(), IsSpace);
    if (isPiecePrinted_) ++count_.printed;
    if (piece_.use_count() != 1) {
        piece_ = std::make_shared<TextBuffer>(text);
        return;
    }
    piece_->Clear();
    if (!piece_->Append(text.data(), static_cast<int>(text.size()))) throw std::bad_alloc();
}

void FieldCapture::End(const TagName& element) {
    for (Group* group : {&common_, own_}) {
        ForMatches(group->fields, element, [&](std::size_t field) { EndField(*group, field); });
    }
}

void FieldCapture::EndField(Group& group, std::size_t field) {
    switch (group.fields[field].onEnd) {
        case OnEnd::StopCapture:
            Stop(group, field);
            break;
        case OnEnd::StopUrlCapture:
            Stop(common_, UrlField());
            break;
        case OnEnd::KeepCapturing:
            Capture(group, field);
            break;
    }
    if (IsItem(group.fields[field])) EndItem(ItemsOf(group.fields[field]));
}

void FieldCapture::Capture(Group& group, std::size_t field) {
    if (group.captured.test(field)) return;
    group.captured.set(field);
    group.taken[field] = count_;
}

void FieldCapture::Stop(Group& group, std::size_t field) {
    HandOver(group, field);
    group.captured.reset(field);
}

/// True when pieces with more than white space came since `taken`, and not only the last one.
bool FieldCapture::IsCut(const Count& taken) const {
    return count_.printed - taken.printed > (isPiecePrinted_ ? 1U : 0U);
}

/// Gives a captured field the last piece, if one came since it last took one.
void FieldCapture::HandOver(Group& group, std::size_t i) {
    if (!group.captured.test(i) || group.taken[i].pieces == count_.pieces || i == group.whole) return;
    const bool isCut = IsCut(group.taken[i]);
    group.taken[i] = count_;
    const Field& field = group.fields[i];
    if (field.kind == FieldKind::Text) {
        record_.At(field.slot) = piece_;
        record_.SetCut(field.slot, isCut);
    } else if (IsPart(field) && ItemsOf(field).isOpen) {
        if (TextTriple* item = ItemsOf(field).list.Current(); item != nullptr) (*item)[field.part] = piece_;
    }
}

FieldCapture::OpenItems& FieldCapture::ItemsOf(const Field& field) {
    const bool isAction =
        field.kind == FieldKind::ResponseAction || field.kind == FieldKind::ResponseActionPart;
    return isAction ? responseActions_ : customFields_;
}

bool FieldCapture::IsPartOf(const Field& field, const OpenItems& items) {
    return IsPart(field) && &ItemsOf(field) == &items;
}

/// What came in front of an item is not its part.
void FieldCapture::BeginItem(OpenItems& items) {
    items.isOpen = true;
    if (TextTriple* item = items.list.Current(); item != nullptr) *item = {};
    for (std::size_t i = 0; i < own_->fields.size(); ++i) {
        if (IsPartOf(own_->fields[i], items)) own_->taken[i] = count_;
    }
}

void FieldCapture::EndItem(OpenItems& items) {
    for (std::size_t i = 0; i < own_->fields.size(); ++i) {
        if (IsPartOf(own_->fields[i], items)) HandOver(*own_, i);
    }
    items.isOpen = false;
    items.list.Count();
}

}  // namespace quorbel
