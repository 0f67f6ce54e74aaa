#pragma once

#include <climits>
#include <memory>
#include <string_view>

/// The growable byte string that holds every captured request value and the server's reply.
///
/// Always ends in a zero byte once it has storage; readers take it as a zero-terminated text. A zero byte
/// inside an appended chunk ends the copy while the length still grows by the whole chunk, so the text then
/// reads as ending there and later chunks start where it ended. Sizes are signed 32-bit; growth past that
/// range, or past a limit, is refused.
class TextBuffer {
public:
    TextBuffer() = default;
    /// Holds `text`. Throws std::bad_alloc: half a value is worse than none.
    explicit TextBuffer(std::string_view text);

    TextBuffer(TextBuffer&& other) noexcept { Swap(other); }
    TextBuffer& operator=(TextBuffer&& other) noexcept;

    /// Refuses to grow beyond `capacity` bytes from now on: a chunk that would need more is dropped whole.
    void LimitTo(int capacity) { limit_ = capacity; }
    /// Makes zeroed room of `capacity` bytes; below 1 the buffer stays without storage. False when there is
    /// no memory.
    bool Initialise(int capacity);
    /// Appends `count` bytes; false when `bytes` is null, `count` is below 1, or there is no memory.
    bool Append(const char* bytes, int count);
    /// Appends a zero-terminated text; false for a null one.
    bool Append(const char* text);
    /// A chunk was dropped because there was no memory for it; a limit drops chunks as it should.
    bool LacksMemory() const { return lacksMemory_; }
    /// Sets the length to 0 and keeps the storage.
    void Clear();
    void Release();

    /// Null while there is no storage.
    const char* data() const { return data_.get(); }
    int capacity() const { return capacity_; }
    int length() const { return length_; }

    /// The text up to its first zero byte; empty without storage.
    std::string_view Text() const { return data_ ? std::string_view(data_.get()) : std::string_view(); }

private:
    bool MakeRoomFor(int count);
    bool Grow(long long capacity);
    bool Reserve(int capacity);
    bool Reallocate(int size);
    void Swap(TextBuffer& other) noexcept;

    struct Free {
        void operator()(char* bytes) const;
    };
    std::unique_ptr<char, Free> data_;
    int limit_ = INT_MAX;
    int reserved_ =
        0;  ///< bytes behind data_, at least capacity_; doubles while there is memory: many small chunks stay cheap
    int capacity_ = 0;
    int length_ = 0;
    int textEnd_ = 0;  ///< where the next chunk lands: the first zero byte
    bool lacksMemory_ = false;
};
