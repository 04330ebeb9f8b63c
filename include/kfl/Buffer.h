// A growable queue of bytes in one block.
//
//     Buffer message(64, 32);
//     message.Write(header, sizeof header);
//     unsigned char byte;
//     while (message.Read(&byte, 1) == 1) handle(byte);
//
// Bytes are appended at the write position and consumed from the read position, both counted from
// the start of the block. It never wraps: room in front of the read position is not used again
// until Clear() or Unwrite(). A buffer with a growth increment enlarges its block when a write does
// not fit; one without (increment 0) takes only what fits. A short count is the only sign that a
// request was cut.
//
// The buffer owns its block. It can be shared by ProtectionElement handles. A size that would pass
// 32 bits fails as an allocation does. One thread at a time uses a buffer.
#ifndef KFL_BUFFER_H
#define KFL_BUFFER_H

#include "kfl/Protectable.h"
#include "kfl/export.h"

// One block of bytes with a write position and a read position.
class KFL_EXPORT Buffer : public Protectable {
  public:
    // Empty, with room for `maxSize` bytes, growing in steps of `increment` (0: never).
    Buffer(unsigned maxSize, unsigned increment);
    // Copies size, increment and all written bytes. The copy is unread from the start, whatever
    // `other` had consumed; its reference count is 0.
    Buffer(const Buffer& other);
    virtual ~Buffer();

    // Releases the block first, then does what the copy constructor does; reference counts stay. A
    // failed allocation leaves the buffer empty, without a block. Kept on purpose: a buffer
    // assigned to itself keeps its counts and loses its bytes, which read as 0.
    Buffer& operator=(const Buffer& other);

    // True when Size() of the two is the same and so are the written bytes; read positions do not
    // count.
    bool operator==(Buffer& other);
    // The byte at `index` of the block, written or not. Every index from the capacity on gives one
    // and the same spare byte behind the block. Invalidates: nothing; the reference itself ends
    // with the next growth.
    unsigned char& operator[](unsigned index);

    // Takes up to `count` unread bytes into `dest`; returns how many.
    unsigned Read(unsigned char* dest, unsigned count);
    // Gives the last `count` bytes read back, or all of them.
    void Unread(unsigned count);
    // Appends `count` bytes, growing where it may; returns how many fitted.
    // Kept on purpose: growth adds increment * (excess % increment + 1) bytes, where excess is what
    // does not fit. The remainder, not the quotient, counts, so one growth may leave the block too
    // small.
    unsigned Write(unsigned char* src, unsigned count);
    // Drops the last `count` bytes written, or all of them; the read position follows where it
    // must.
    void Unwrite(unsigned count);
    // Takes up to `count` unread bytes, all through the one location `dest`, as for a device
    // register. Returns how many that would be. Kept on purpose: the loop counts in 16 signed bits.
    // For a result whose low 16 bits are zero or negative as such a number no byte is moved; for a
    // larger one only as many as these bits say.
    unsigned OneLocationRead(unsigned char* dest, unsigned count);
    // Appends the byte at `src`, read anew each time, `count` times; grows as Write does. The
    // result and the 16-bit loop are those of OneLocationRead.
    unsigned OneLocationWrite(unsigned char* src, unsigned count);
    // Moves up to `count` unread bytes of `src` to the end of `dest`, which grows as in Write;
    // returns how many. What did not fit stays unread. The buffer on which this is called takes no
    // part.
    unsigned ReadWrite(Buffer& dest, Buffer& src, unsigned count);
    // Appends all written bytes of `other`, read or not. A block that is too small is enlarged to
    // exactly what is needed, whatever the increment.
    Buffer& operator+=(const Buffer& other);

    // Goes back to the first byte for reading.
    virtual void Reset();
    // Empties the buffer and keeps the block.
    virtual void Clear();
    // Bytes written, read or not.
    virtual unsigned Size();
    // The capacity in bytes.
    virtual unsigned MaxSize();
    // Declares that `count` bytes of the block are written; ignored when they are more than the
    // capacity. Kept on purpose: the read position stays, also where it then stands behind the
    // written bytes (there is nothing to read until it is back).
    virtual void SetWriteCount(unsigned count);

    // Bytes written and not yet read.
    unsigned unread() const { return readIndex < writeCount ? writeCount - readIndex : 0; }
    // The index of the next byte to be read.
    unsigned readPosition() const { return readIndex; }
    // The growth increment.
    unsigned growthIncrement() const { return increment; }
    // The start of the block; null while the capacity is 0.
    const unsigned char* bytes() const { return data; }

  private:
    unsigned maxSize;
    unsigned increment;
    unsigned char* data;
    unsigned readIndex;
    unsigned writeCount;
};

#endif
