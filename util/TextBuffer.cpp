#include "util/TextBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr int kDoubleFrom = 4096;  ///< most values are short: those take no more than they need
constexpr int kSpare = 100;        ///< room added with every growth, for the chunks that follow

}  // namespace

void TextBuffer::Free::operator()(char* bytes) const {
    std::free(bytes);
}

TextBuffer::TextBuffer(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(INT_MAX)) throw std::bad_alloc();
    if (!text.empty() && !Append(text.data(), static_cast<int>(text.size()))) throw std::bad_alloc();
}

TextBuffer& TextBuffer::operator=(TextBuffer&& other) noexcept {
    TextBuffer taken(std::move(other));
    Swap(taken);
    return *this;
}

void TextBuffer::Swap(TextBuffer& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(limit_, other.limit_);
    std::swap(reserved_, other.reserved_);
    std::swap(capacity_, other.capacity_);
    std::swap(length_, other.length_);
    std::swap(textEnd_, other.textEnd_);
    std::swap(lacksMemory_, other.lacksMemory_);
}

bool TextBuffer::Initialise(int capacity) {
    Release();
    return capacity < 1 || Grow(capacity);
}

bool TextBuffer::Append(const char* bytes, int count) {
    if (bytes == nullptr || count < 1) return false;
    if (!MakeRoomFor(count)) return false;
    // Concatenation starts at the first zero byte, not at the length: after a chunk with a zero byte they
    // differ.
    const int copied = static_cast<int>(strnlen(bytes, static_cast<std::size_t>(count)));
    std::memcpy(data_.get() + textEnd_, bytes, static_cast<std::size_t>(copied));
    textEnd_ += copied;
    data_.get()[textEnd_] = '\0';
    length_ += count;
    data_.get()[length_] = '\0';
    return true;
}

bool TextBuffer::Append(const char* text) {
    if (text == nullptr) return false;
    const std::size_t length = std::strlen(text);
    return length <= static_cast<std::size_t>(INT_MAX) && Append(text, static_cast<int>(length));
}

void TextBuffer::Clear() {
    length_ = 0;
    textEnd_ = 0;
    lacksMemory_ = false;
    if (data_) *data_ = '\0';
}

void TextBuffer::Release() {
    data_.reset();
    reserved_ = capacity_ = length_ = textEnd_ = 0;
    lacksMemory_ = false;
}

bool TextBuffer::MakeRoomFor(int count) {
    if (data_ && static_cast<long long>(length_) + count + 2 <= capacity_) return true;
    const long long wanted = static_cast<long long>(length_) + count + kSpare;
    const bool isDone = Grow(wanted);
    if (!isDone && wanted <= limit_) lacksMemory_ = true;
    return isDone;
}

bool TextBuffer::Grow(long long capacity) {
    if (capacity > limit_ || !Reserve(static_cast<int>(capacity))) return false;
    std::memset(data_.get() + capacity_, 0, static_cast<std::size_t>(capacity - capacity_));
    capacity_ = static_cast<int>(capacity);
    return true;
}

bool TextBuffer::Reserve(int capacity) {
    if (capacity <= reserved_) return true;
    const int doubled = reserved_ > limit_ / 2 ? limit_ : reserved_ * 2;
    const int size = reserved_ < kDoubleFrom ? capacity : std::max(capacity, doubled);
    return Reallocate(size) || (size > capacity && Reallocate(capacity));
}

bool TextBuffer::Reallocate(int size) {
    char* grown = static_cast<char*>(std::realloc(data_.get(), static_cast<std::size_t>(size)));
    if (grown == nullptr) return false;
    static_cast<void>(data_.release());
    data_.reset(grown);
    reserved_ = size;
    return true;
}
