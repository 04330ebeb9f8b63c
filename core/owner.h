// A heap object that has not found its home yet.
#ifndef KFL_CORE_OWNER_H
#define KFL_CORE_OWNER_H

namespace kfl::detail {

// Deletes the object unless it was released: what a failed allocation leaves half done is not lost.
template <class T>
class Owner {
  public:
    explicit Owner(T* object) : object_(object) {}
    ~Owner() { delete object_; }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    T* operator->() const { return object_; }
    T* get() const { return object_; }
    T* release() {
        T* const object = object_;
        object_ = nullptr;
        return object;
    }

  private:
    T* object_;
};

}  // namespace kfl::detail

#endif
