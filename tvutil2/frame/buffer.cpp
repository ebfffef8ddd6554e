#include "tvutil2/frame/buffer.h"

#include "tvutil2/frame/ansi_string.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

constexpr int kWipe = 0x2A;
constexpr std::uint64_t kSlack = 1024;

std::uint64_t sum(unsigned int a, unsigned int b) {
    return std::uint64_t{a} + b;
}

}  // namespace

CBuffer::CBuffer(const unsigned char* data, unsigned int len) {
    Append(data, len);
}

CBuffer::CBuffer(const CBuffer& other) {
    Append(other);
}

CBuffer& CBuffer::operator=(const CBuffer& other) {
    if (this != &other) {
        Clear(0);
        Append(other);
    }
    return *this;
}

CBuffer::~CBuffer() {
    wipe_block();
    FreeHeap(storage);
}

unsigned char CBuffer::GetByte() {
    unsigned char byte = 0;
    Get(&byte, 1);
    return byte;
}

void CBuffer::Append(const char* data, unsigned int len) {
    Append(reinterpret_cast<const unsigned char*>(data), len);
}

void CBuffer::Append(const unsigned char* data, unsigned int len) {
    if (data != nullptr && len != 0) std::memcpy(AppendSpace(len), data, len);
}

void CBuffer::Append(const CBuffer& other) {
    Append(other.Ptr(), other.length);
}

void CBuffer::Append(const CAnsiString& s) {
    Append(static_cast<const char*>(s), static_cast<unsigned int>(s.GetLength()));
}

unsigned char* CBuffer::AppendSpace(unsigned int n) {
    if (sum(offset, length) + n > capacity) {
        const auto needed = sum(length, n);
        if (needed > UINT_MAX) throw std::bad_alloc();
        if (offset != 0 && length != 0) std::memmove(storage, Ptr(), length);
        offset = 0;
        if (needed > capacity) {
            const auto roomy = std::min<std::uint64_t>(needed + kSlack, UINT_MAX);
            replace_block(static_cast<unsigned int>(roomy), 0);
        }
    }
    unsigned char* const end = storage + offset + length;
    length += n;
    return end;
}

unsigned char* CBuffer::InsertSpace(unsigned int n) {
    if (offset >= n) {
        offset -= n;
    } else {
        const auto needed = sum(length, n);
        if (needed > UINT_MAX) throw std::bad_alloc();
        if (needed > capacity) {
            replace_block(static_cast<unsigned int>(needed), n);
        } else if (length != 0) {
            std::memmove(storage + n, Ptr(), length);
        }
        offset = 0;
    }
    length += n;
    return storage + offset;
}

unsigned int CBuffer::Get(unsigned char* out, unsigned int n) {
    const auto count = std::min(n, length);
    if (count != 0) std::memcpy(out, Ptr(), count);
    return Consume(count);
}

unsigned int CBuffer::Consume(unsigned int n) {
    const auto count = std::min(n, length);
    offset += count;
    return taken(count);
}

unsigned int CBuffer::ConsumeEnd(unsigned int n) {
    return taken(std::min(n, length));
}

// Books the bytes out; an empty buffer has its whole block free again.
unsigned int CBuffer::taken(unsigned int n) {
    length -= n;
    if (length == 0) offset = 0;
    return n;
}

void CBuffer::Clear(int wipe) {
    length = 0;
    offset = 0;
    if (wipe == 0 || storage == nullptr) return;
    wipe_block();
    FreeHeap(storage);
    storage = nullptr;
    capacity = 0;
}

unsigned char* CBuffer::Renew(unsigned int n) {
    if (n != capacity) {
        Clear(1);
        return InsertSpace(n);
    }
    wipe_block();
    offset = 0;
    length = n;
    return storage;
}

int CBuffer::operator==(const CBuffer& other) const {
    return length == other.length && (length == 0 || std::memcmp(Ptr(), other.Ptr(), length) == 0)
               ? 1
               : 0;
}

unsigned char* CBuffer::AllocHeap(unsigned int size) {
    return new unsigned char[size];
}

void CBuffer::FreeHeap(unsigned char* p) {
    delete[] p;
}

void CBuffer::wipe_block() const {
    if (storage == nullptr) return;
    std::memset(storage, kWipe, capacity);
    // The block is given back next and read by nobody: without a witness the compiler may leave the
    // writing out.
    asm volatile("" : : "r"(storage) : "memory");
}

// Moves the live bytes to a new block. The old one is not wiped.
void CBuffer::replace_block(unsigned int new_capacity, unsigned int new_offset) {
    unsigned char* const block = AllocHeap(new_capacity);
    if (length != 0) std::memcpy(block + new_offset, Ptr(), length);
    FreeHeap(storage);
    storage = block;
    capacity = new_capacity;
}
