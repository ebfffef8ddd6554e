// CBuffer: a growable queue of bytes with room at both ends, whose storage is overwritten before it
// is given back.
//
// An object belongs to one thread at a time. Sizes are in bytes and fit 32 bits: what would grow
// beyond that throws std::bad_alloc, as a failed allocation does, and leaves the content as it was.
#pragma once

#include "tvutil2/platform/base/export.h"

class CAnsiString;

class TVUTIL_API CBuffer {
  public:
    /// Empty and without a block; then the bytes, if there are any.
    CBuffer(const unsigned char* data = nullptr, unsigned int len = 0);
    /// A copy of the live bytes in a block of its own.
    CBuffer(const CBuffer& other);
    CBuffer& operator=(const CBuffer& other);
    /// Wipes the block and gives it back.
    virtual ~CBuffer();

    [[nodiscard]] unsigned int Len() const { return length; }
    /// The first live byte; null when there never was a block. Good until the next change.
    [[nodiscard]] const unsigned char* Ptr() const { return storage + offset; }
    /// Byte `i`, which must be below Len().
    unsigned char operator[](int i) const { return Ptr()[i]; }

    void PutByte(unsigned char b) { *AppendSpace(1) = b; }
    /// Takes the first byte away; 0 when there is none.
    unsigned char GetByte();

    /// Bytes at the end; nothing for null or none. They must not lie in this buffer.
    void Append(const char* data, unsigned int len);
    void Append(const unsigned char* data, unsigned int len);
    void Append(const CBuffer& other);
    void Append(const CBuffer* other) { Append(*other); }
    /// The characters without their zero.
    void Append(const CAnsiString& s);

    /// `n` more bytes at the end, live at once, for the caller to fill. When the room behind the
    /// live bytes is too small they move to the front of the block, and when that is too small they
    /// move to a new one with 1024 bytes to spare.
    unsigned char* AppendSpace(unsigned int n);
    /// `n` more bytes in front of the first one, for the caller to fill. A new block has exactly
    /// the size it needs.
    unsigned char* InsertSpace(unsigned int n);

    /// Take up to `n` bytes away, at the front or the end, and give how many. No data moves.
    unsigned int Get(unsigned char* out, unsigned int n);
    unsigned int Consume(unsigned int n);
    unsigned int ConsumeEnd(unsigned int n);

    /// Empties the buffer. With `wipe` the block is wiped and given back; without it the block
    /// stays for reuse, and with it the old bytes.
    void Clear(int wipe);
    /// Clear(1) and then `n` bytes, live at once, for the caller to fill, in a block of that size.
    /// A wiped block that has the size serves again.
    unsigned char* Renew(unsigned int n);

    /// By live bytes alone.
    int operator==(const CBuffer& other) const;
    int operator!=(const CBuffer& other) const { return *this == other ? 0 : 1; }

    /// An uninitialised block, and its way back (null is allowed; nothing is wiped).
    static unsigned char* AllocHeap(unsigned int size);
    static void FreeHeap(unsigned char* p);

  protected:
    /// Live bytes are storage[offset .. offset + length), within `capacity`. The block may hold
    /// stale bytes around them.
    unsigned char* storage = nullptr;
    unsigned int length = 0;
    unsigned int offset = 0;
    unsigned int capacity = 0;

  private:
    void wipe_block() const;
    void replace_block(unsigned int new_capacity, unsigned int new_offset);
    unsigned int taken(unsigned int n);
};
