// Ordered collections of pointers: VoidPtrOrderedCollection beside std::vector<void*>, GLib's
// GPtrArray and Qt's QVector (the latter two where they are installed), and beside bare classes of
// a shared library: one that does a step or an index through a virtual table, one that appends.
#include <algorithm>
#include <memory>
#include <vector>

#include "benchmarks/bare_list.h"
#include "benchmarks/bare_table.h"
#include "benchmarks/contest.h"
#include "kfl/VoidPtrCollection.h"

#ifdef KFL_HAVE_glib
#include <glib.h>
#endif
#ifdef KFL_HAVE_qt
#include <QVector>
#endif

using kfl::VoidPtrIterator;
using kfl::VoidPtrOrderedCollection;
using kfl_benchmark::Contest;

namespace {

constexpr unsigned int many = 1000;
constexpr unsigned int searched = 10000;

// Items are numbers: nothing looks behind them.
void* item(unsigned int i) { return reinterpret_cast<void*>(std::uintptr_t{i} * 16 + 16); }

void enterAppend() {
    Contest contest("collection: append 1000");
    contest.enter("kfl", [](auto& sees) {
        VoidPtrOrderedCollection list;
        kfl::VoidPtrCollection* const any = &list;
        benchmark::DoNotOptimize(any);
        for (unsigned int i = 0; i < many; ++i) list.add(item(i));
        sees.bytes(list.data(), many * sizeof(void*));
    });
    contest.enter("bare", [](auto& sees) {
        kfl_benchmark::BareList list;
        for (unsigned int i = 0; i < many; ++i) list.add(item(i));
        sees.bytes(list.slots(), many * sizeof(void*));
    });
    contest.enter("std", [](auto& sees) {
        std::vector<void*> list;
        benchmark::DoNotOptimize(list);
        for (unsigned int i = 0; i < many; ++i) list.push_back(item(i));
        sees.bytes(list.data(), many * sizeof(void*));
    });
#ifdef KFL_HAVE_qt
    contest.enter("qt", [](auto& sees) {
        QVector<void*> list;
        for (unsigned int i = 0; i < many; ++i) list.append(item(i));
        sees.bytes(list.constData(), many * sizeof(void*));
    });
#endif
#ifdef KFL_HAVE_glib
    contest.enter("glib", [](auto& sees) {
        GPtrArray* const list = g_ptr_array_new();
        for (unsigned int i = 0; i < many; ++i) g_ptr_array_add(list, item(i));
        sees.bytes(list->pdata, many * sizeof(void*));
        g_ptr_array_free(list, TRUE);
    });
#endif
}

std::shared_ptr<VoidPtrOrderedCollection> filled(unsigned int n) {
    auto list = std::make_shared<VoidPtrOrderedCollection>(n);
    for (unsigned int i = 0; i < n; ++i) list->add(item(i));
    return list;
}

std::shared_ptr<kfl_benchmark::Table> bareTable() {
    std::vector<void*> items;
    for (unsigned int i = 0; i < many; ++i) items.push_back(item(i));
    return kfl_benchmark::makeBareTable(items);
}

void enterStep() {
    Contest contest("collection: step 1000");
    contest.enter("kfl", [list = filled(many)](auto& sees) {
        VoidPtrOrderedCollection* walked = list.get();
        benchmark::DoNotOptimize(walked);
        VoidPtrIterator it(walked);
        std::uintptr_t sum = 0;
        while (void* const p = walked->next(it)) sum += reinterpret_cast<std::uintptr_t>(p);
        sees.value(sum);
    });
    contest.enter("bare", [table = bareTable()](auto& sees) {
        kfl_benchmark::Table* walked = table.get();
        benchmark::DoNotOptimize(walked);
        kfl_benchmark::Place place{0, walked->at(0)};
        std::uintptr_t sum = 0;
        while (void* const p = walked->next(place)) sum += reinterpret_cast<std::uintptr_t>(p);
        sees.value(sum);
    });
}

void enterIndex() {
    Contest contest("collection: index 1000");
    contest.enter("kfl", [list = filled(many)](auto& sees) {
        VoidPtrOrderedCollection* asked = list.get();
        benchmark::DoNotOptimize(asked);
        std::uintptr_t sum = 0;
        for (unsigned int i = 0; i < many; ++i) {
            sum += reinterpret_cast<std::uintptr_t>(asked->idAt(i));
        }
        sees.value(sum);
    });
    contest.enter("bare", [table = bareTable()](auto& sees) {
        kfl_benchmark::Table* asked = table.get();
        benchmark::DoNotOptimize(asked);
        std::uintptr_t sum = 0;
        for (unsigned int i = 0; i < many; ++i) {
            sum += reinterpret_cast<std::uintptr_t>(asked->at(i));
        }
        sees.value(sum);
    });
}

// The last of 10,000.
void enterSearch() {
    void* const last = item(searched - 1);
    Contest contest("collection: search 10000");
    contest.enter("kfl", [last, list = filled(searched)](auto& sees) {
        sees.value(list->indexOfSame(last));
    });
    std::vector<void*> items;
    for (unsigned int i = 0; i < searched; ++i) items.push_back(item(i));
    contest.enter("std", [last, items](auto& sees) {
        sees.value(std::find(items.begin(), items.end(), last) - items.begin());
    });
#ifdef KFL_HAVE_qt
    contest.enter("qt", [last, list = QVector<void*>(items.begin(), items.end())](auto& sees) {
        sees.value(list.indexOf(last));
    });
#endif
#ifdef KFL_HAVE_glib
    GPtrArray* const list = g_ptr_array_new();
    for (void* const p : items) g_ptr_array_add(list, p);
    contest.enter("glib", [last, list](auto& sees) {
        guint index = 0;
        g_ptr_array_find(list, last, &index);
        sees.value(index);
    });
#endif
}

// One in and one out at the front of 1,000.
void enterFront() {
    Contest contest("collection: insert and remove at the front");
    contest.enter("kfl", [list = filled(many)](auto& sees) {
        list->insertAt(0, item(7));
        list->removeAt(0);
        sees.bytes(list->data(), many * sizeof(void*));
    });
    std::vector<void*> items;
    for (unsigned int i = 0; i < many; ++i) items.push_back(item(i));
    contest.enter("std", [items](auto& sees) mutable {
        items.insert(items.begin(), item(7));
        benchmark::ClobberMemory();
        items.erase(items.begin());
        sees.bytes(items.data(), many * sizeof(void*));
    });
#ifdef KFL_HAVE_glib
    GPtrArray* const list = g_ptr_array_new();
    for (void* const p : items) g_ptr_array_add(list, p);
    contest.enter("glib", [list](auto& sees) {
        g_ptr_array_insert(list, 0, item(7));
        g_ptr_array_remove_index(list, 0);
        sees.bytes(list->pdata, many * sizeof(void*));
    });
#endif
}

}  // namespace

int main(int count, char** arguments) {
    enterAppend();
    enterStep();
    enterIndex();
    enterSearch();
    enterFront();
    return kfl_benchmark::runAll(count, arguments);
}
