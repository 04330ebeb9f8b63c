// The least that a string of a shared library can do: an object with a virtual table whose text is
// an array of its own, ended by a NUL, and whose operations are calls.
#ifndef KFL_BENCHMARKS_BARE_TEXT_H
#define KFL_BENCHMARKS_BARE_TEXT_H

namespace kfl_benchmark {

class BareText {
  public:
    // An empty text with room for this many characters.
    explicit BareText(unsigned int room);
    explicit BareText(const char* text);
    BareText(const BareText& other);
    BareText& operator=(const BareText&) = delete;
    virtual ~BareText();

    // There must be room.
    void insert(unsigned int pos, const char* text);
    void erase(unsigned int pos, unsigned int count);
    bool operator==(const BareText& other) const;
    // Knows where a text ends by its NUL alone.
    int find(const char* needle) const;

    const char* c_str() const { return data_; }
    unsigned int length() const { return length_; }

  private:
    char* data_;
    unsigned int room_;
    unsigned int length_;
};

}  // namespace kfl_benchmark

#endif
