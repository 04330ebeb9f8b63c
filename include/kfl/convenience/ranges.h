// Walks through collections and configuration files with the language's own loop.
//
//     for (Peer* peer : kfl::items<Peer>(peers)) greet(*peer);
//
//     for (const kfl::st_section& section : kfl::sections(config)) {
//         for (const kfl::st_key& key : kfl::keys(section)) show(key.name, key.value);
//     }
//
// A range keeps a reference to what it walks, and asks it for its count and items at every step: a
// list that grows during the loop is walked to its new end, and after a removal the loop goes on
// with the item that then has the next index. What is walked must outlive the range.
#ifndef KFL_CONVENIENCE_RANGES_H
#define KFL_CONVENIENCE_RANGES_H

#include "kfl/Collection.h"
#include "kfl/IniFileParser.h"
#include "kfl/VoidPtrCollection.h"

namespace kfl {

// The items of a list, each as a T*. `List` is VoidPtrOrderedCollection or OrdCollect.
template <class List, class T>
class ItemRange {
  public:
    // A position in a list.
    class iterator {
      public:
        // The position before the item of that index.
        iterator(const List& list, unsigned int index) : list_(&list), index_(index) {}
        // Stored nulls, and items that were cut off, come as null.
        T* operator*() const { return static_cast<T*>(list_->idAt(index_)); }
        // Goes on to the next item.
        iterator& operator++() {
            ++index_;
            return *this;
        }
        // Asked with the end of a range alone: true while there are items.
        bool operator!=(const iterator& /*end*/) const { return index_ < list_->count(); }

      private:
        const List* list_;
        unsigned int index_;
    };

    // All of a list, which must outlive this.
    explicit ItemRange(const List& list) : list_(list) {}
    // The first item.
    iterator begin() const { return iterator(list_, 0); }
    // Behind the last item there is now.
    iterator end() const { return iterator(list_, list_.count()); }

  private:
    const List& list_;
};

// The items in their order, as what the host knows they are.
// Requires: every item is a T, or null.
template <class T>
ItemRange<VoidPtrOrderedCollection, T> items(const VoidPtrOrderedCollection& list) {
    return ItemRange<VoidPtrOrderedCollection, T>(list);
}
// The same for a list of objects.
template <class T>
ItemRange<OrdCollect, T> items(const OrdCollect& list) {
    return ItemRange<OrdCollect, T>(list);
}
// The pointers of a list, as they are stored.
inline ItemRange<VoidPtrOrderedCollection, void> items(const VoidPtrOrderedCollection& list) {
    return ItemRange<VoidPtrOrderedCollection, void>(list);
}
// The objects of a list, as they are stored.
inline ItemRange<OrdCollect, SObject> items(const OrdCollect& list) {
    return ItemRange<OrdCollect, SObject>(list);
}

// The records of a configuration file, each as a Record&. As for the parser's own look-ups, a null
// entry, which only a host can have made, ends the walk.
template <class Record>
class RecordRange {
  public:
    // A position in the list of records.
    class iterator {
      public:
        // The position before the first record.
        explicit iterator(const VoidPtrOrderedCollection& list) : list_(&list), index_(0) {}
        // The record here. Requires: not at the end.
        Record& operator*() const { return *record(); }
        // Goes on to the next record.
        iterator& operator++() {
            ++index_;
            return *this;
        }
        // As for ItemRange.
        bool operator!=(const iterator& /*end*/) const { return record() != nullptr; }

      private:
        Record* record() const { return static_cast<Record*>(list_->idAt(index_)); }

        const VoidPtrOrderedCollection* list_;
        unsigned int index_;
    };

    // All records of a list, which must outlive this.
    explicit RecordRange(const VoidPtrOrderedCollection& list) : list_(list) {}
    // The first record.
    iterator begin() const { return iterator(list_); }
    // What a walk compares with.
    iterator end() const { return iterator(list_); }

  private:
    const VoidPtrOrderedCollection& list_;
};

// The sections in order of creation; the first is "".
inline RecordRange<st_section> sections(const IniFileParser& parser) {
    return RecordRange<st_section>(parser.sectionList());
}
// The keys of a section in order of creation.
inline RecordRange<st_key> keys(const st_section& section) {
    return RecordRange<st_key>(section.keys);
}

}  // namespace kfl

#endif
