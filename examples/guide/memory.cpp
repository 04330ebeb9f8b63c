// A queue of bytes, and a pool of equal blocks.
#include <cstdio>

#include "kfl/Buffer.h"
#include "kfl/LocalHeap.h"

namespace {

struct Packet {
    void* owner;
    unsigned int sequence;
};

}  // namespace

int main() {
    unsigned char header[] = {0x01, 0x00, 0x00, 0x2A};
    Buffer message(4, 0);  // room for 4 bytes, never more
    const unsigned int taken = message.Write(header, sizeof header);
    std::printf("%u taken, then %u\n", taken, message.Write(header, 1));
    unsigned char byte = 0;
    while (message.Read(&byte, 1) == 1) std::printf("%02X ", byte);
    message.Unread(1);
    std::printf("- %u unread again\n", message.unread());

    LocalHeap heap(64, sizeof(Packet), LocalHeap::GrowOnDemand);
    Packet* const packet = static_cast<Packet*>(heap.allocateBlock(sizeof(Packet)));
    *packet = {&heap, 7};
    std::printf("packet %u, %u in use\n", packet->sequence, heap.inUse());
    heap.deallocateBlock(packet, sizeof(Packet));
    std::printf("%u in use, %u at most\n", heap.inUse(), heap.maxInUse());
    return 0;
}
