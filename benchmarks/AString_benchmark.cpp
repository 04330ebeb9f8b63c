// Strings: AString beside std::string, GLib's GString and ELL's l_string (the latter two where they
// are installed), and beside a bare string of a shared library.
#include <memory>
#include <string>

#include "benchmarks/bare_text.h"
#include "benchmarks/contest.h"
#include "kfl/AString.h"

#ifdef KFL_HAVE_glib
#include <glib.h>
#endif
#ifdef KFL_HAVE_ell
#include "benchmarks/ell.h"
#endif

using kfl::AString;
using kfl_benchmark::BareText;
using kfl_benchmark::Contest;

namespace {

constexpr unsigned int appends = 1000;
constexpr char ten[] = "0123456789";

std::string madeText(unsigned int n, unsigned int seed) {
    kfl_benchmark::Numbers numbers(seed);
    std::string text;
    for (unsigned int i = 0; i < n; ++i) text += "etaoin shrdlu"[numbers.next(13)];
    return text;
}

template <class Sees>
void show(Sees& sees, const AString& s) {
    sees.bytes(s.c_str(), s.length());
}
template <class Sees>
void show(Sees& sees, const BareText& s) {
    sees.bytes(s.c_str(), s.length());
}
template <class Sees>
void show(Sees& sees, const std::string& s) {
    sees.bytes(s.data(), s.size());
}
#ifdef KFL_HAVE_glib
template <class Sees>
void show(Sees& sees, const GString* s) {
    sees.bytes(s->str, s->len);
}
#endif

// `room` of 1: the string grows as it must.
void enterAppendCharacter(const char* name, unsigned int room) {
    Contest contest(name);
    contest.enter("kfl", [room](auto& sees) {
        AString s(room);
        for (unsigned int i = 0; i < appends; ++i) s.append('x');
        show(sees, s);
    });
    contest.enter("std", [room](auto& sees) {
        std::string s;
        s.reserve(room);
        for (unsigned int i = 0; i < appends; ++i) s.push_back('x');
        show(sees, s);
    });
#ifdef KFL_HAVE_glib
    contest.enter("glib", [room](auto& sees) {
        GString* const s = g_string_sized_new(room);
        for (unsigned int i = 0; i < appends; ++i) g_string_append_c(s, 'x');
        show(sees, s);
        g_string_free(s, TRUE);
    });
#endif
#ifdef KFL_HAVE_ell
    contest.enter("ell", [room](auto& sees) {
        l_string* const s = l_string_new(room);
        for (unsigned int i = 0; i < appends; ++i) l_string_append_c(s, 'x');
        char* const text = l_string_unwrap(s);
        sees.bytes(text, appends);
        l_free(text);
    });
#endif
}

void enterAppendTen(const char* name, unsigned int room) {
    Contest contest(name);
    contest.enter("kfl", [room](auto& sees) {
        AString s(room);
        for (unsigned int i = 0; i < appends / 10; ++i) s.append(ten);
        show(sees, s);
    });
    contest.enter("std", [room](auto& sees) {
        std::string s;
        s.reserve(room);
        for (unsigned int i = 0; i < appends / 10; ++i) s.append(ten);
        show(sees, s);
    });
#ifdef KFL_HAVE_glib
    contest.enter("glib", [room](auto& sees) {
        GString* const s = g_string_sized_new(room);
        for (unsigned int i = 0; i < appends / 10; ++i) g_string_append(s, ten);
        show(sees, s);
        g_string_free(s, TRUE);
    });
#endif
#ifdef KFL_HAVE_ell
    contest.enter("ell", [room](auto& sees) {
        l_string* const s = l_string_new(room);
        for (unsigned int i = 0; i < appends / 10; ++i) l_string_append(s, ten);
        char* const text = l_string_unwrap(s);
        sees.bytes(text, appends);
        l_free(text);
    });
#endif
}

void enterMake(unsigned int n) {
    const std::string text = madeText(n, 1);
    Contest contest("string: make " + std::to_string(n));
    contest.enter("kfl", [text](auto& sees) { show(sees, AString(text.c_str())); });
    contest.enter("bare", [text](auto& sees) { show(sees, BareText(text.c_str())); });
    contest.enter("std", [text](auto& sees) { show(sees, std::string(text.c_str())); });
#ifdef KFL_HAVE_glib
    contest.enter("glib", [text](auto& sees) {
        GString* const s = g_string_new(text.c_str());
        show(sees, s);
        g_string_free(s, TRUE);
    });
#endif
}

void enterCopy(unsigned int n) {
    const std::string text = madeText(n, 1);
    Contest contest("string: copy " + std::to_string(n));
    const AString ours(text.c_str());
    contest.enter("kfl", [ours](auto& sees) { show(sees, AString(ours)); });
    const BareText theirs(text.c_str());
    contest.enter("bare", [theirs](auto& sees) { show(sees, BareText(theirs)); });
    contest.enter("std", [text](auto& sees) { show(sees, std::string(text)); });
#ifdef KFL_HAVE_glib
    GString* const from = g_string_new(text.c_str());
    contest.enter("glib", [from](auto& sees) {
        GString* const s = g_string_new_len(from->str, static_cast<gssize>(from->len));
        show(sees, s);
        g_string_free(s, TRUE);
    });
#endif
}

void enterCompare(unsigned int n) {
    const std::string text = madeText(n, 1);
    const std::string same = madeText(n, 1);
    Contest contest("string: compare " + std::to_string(n));
    const AString a(text.c_str());
    const AString b(text.c_str());
    contest.enter("kfl", [a, b](auto& sees) { sees.value(int{a == b}); });
    const BareText c(text.c_str());
    const BareText d(text.c_str());
    contest.enter("bare", [c, d](auto& sees) { sees.value(int{c == d}); });
    contest.enter("std", [text, same](auto& sees) {
        benchmark::DoNotOptimize(text.data());
        benchmark::DoNotOptimize(same.data());
        sees.value(int{text == same});
    });
#ifdef KFL_HAVE_glib
    GString* const s = g_string_new(text.c_str());
    GString* const t = g_string_new(text.c_str());
    contest.enter("glib", [s, t](auto& sees) { sees.value(g_string_equal(s, t)); });
#endif
}

// Ten characters go in at the front of 200 and out again.
void enterInsertAndErase() {
    const std::string text = madeText(200, 1);
    Contest contest("string: insert and erase");
    const auto ours = std::make_shared<AString>(400U);
    ours->append(text.c_str());
    contest.enter("kfl", [ours](auto& sees) {
        ours->insert(5, ten);
        sees.value(ours->length());
        ours->erase(5, 10);
        show(sees, *ours);
    });
    const auto bare = std::make_shared<BareText>(400U);
    bare->insert(0, text.c_str());
    contest.enter("bare", [bare](auto& sees) {
        bare->insert(5, ten);
        sees.value(bare->length());
        bare->erase(5, 10);
        show(sees, *bare);
    });
    contest.enter("std", [s = text](auto& sees) mutable {
        s.insert(5, ten);
        sees.value(s.size());
        s.erase(5, 10);
        show(sees, s);
    });
#ifdef KFL_HAVE_glib
    GString* const s = g_string_new(text.c_str());
    contest.enter("glib", [s](auto& sees) {
        g_string_insert(s, 5, ten);
        sees.value(s->len);
        g_string_erase(s, 5, 10);
        show(sees, s);
    });
#endif
}

// In 1,000 characters, near their end; `needle` begins with a frequent or a rare character.
void enterFind(const char* name, const char* needle) {
    const std::string text = madeText(990, 1) + needle;
    Contest contest(name);
    const auto ours = std::make_shared<AString>(text.c_str());
    contest.enter("kfl", [ours, needle](auto& sees) { sees.value(ours->find(needle, 0)); });
    const BareText theirs(text.c_str());
    contest.enter("bare", [theirs, needle](auto& sees) { sees.value(theirs.find(needle)); });
    contest.enter("std", [text, needle](auto& sees) { sees.value(text.find(needle)); });
#ifdef KFL_HAVE_glib
    contest.enter("glib", [text, needle](auto& sees) {
        sees.value(g_strstr_len(text.c_str(), -1, needle) - text.c_str());
    });
#endif
}

}  // namespace

int main(int count, char** arguments) {
    enterAppendCharacter("string: append a character", 1100);
    enterAppendCharacter("string: append a character, growing", 1);
    enterAppendTen("string: append ten", 1100);
    enterAppendTen("string: append ten, growing", 1);
    for (const unsigned int n : {20U, 200U}) {
        enterMake(n);
        enterCopy(n);
        enterCompare(n);
    }
    enterInsertAndErase();
    enterFind("string: find, frequent first", "tion loss");
    enterFind("string: find, rare first", "key loss");
    enterFind("string: find, a character", "k");
    return kfl_benchmark::runAll(count, arguments);
}
