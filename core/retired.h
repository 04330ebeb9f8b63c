// An array that a growth replaced.
#ifndef KFL_CORE_RETIRED_H
#define KFL_CORE_RETIRED_H

namespace kfl::detail {

// Releases the array at the end of the call that replaced it, not sooner: the call's argument may
// lie in it. Null stands for an array that stayed in use.
template <class T>
class Retired {
  public:
    explicit Retired(T* array) : array_(array) {}
    ~Retired() { delete[] array_; }
    Retired(const Retired&) = delete;
    Retired& operator=(const Retired&) = delete;

  private:
    T* array_;
};

}  // namespace kfl::detail

#endif
