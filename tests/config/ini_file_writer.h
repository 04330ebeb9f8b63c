// Writes INI files that lie close to every rule of the reader.
#ifndef KFL_TESTS_INI_FILE_WRITER_H
#define KFL_TESTS_INI_FILE_WRITER_H

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "tests/support/choices.h"

namespace kfl_test {

class IniFileWriter {
  public:
    explicit IniFileWriter(Choices& random) : random_(random) {}

    std::string file() {
        std::string text;
        const unsigned int lines = random_.below(30);
        for (unsigned int i = 0; i < lines; ++i) {
            if (random_.oneIn(40)) padToBorder(text);
            text += line();
            // The last line often lacks its end.
            if (i + 1 < lines || random_.oneIn(2)) text += lineEnd();
        }
        return text;
    }

    // A name out of few, in any case, so that names come again.
    std::string name() {
        static const char* const names[] = {"a",   "b",   "mode", "port", "net",
                                            "a b", "x]y", "\xE4", ""};
        std::string name = names[random_.below(std::size(names))];
        for (char& c : name)
            if (c >= 'a' && c <= 'z' && random_.oneIn(3)) c = static_cast<char>(c - 'a' + 'A');
        return name;
    }

    std::string value() {
        static const char* const values[] = {"1",  " 8080", "",     "=x", "a;b",
                                             "t#", "[z]",   "-3.5", "yes"};
        return values[random_.below(std::size(values))] + (random_.oneIn(4) ? noise(12) : "");
    }

    // Up to so many characters, most of them with a meaning.
    std::string noise(unsigned int most) {
        static const std::string characters =
            std::string(" \t\r=:[];#aAbB", 13) + '\0' + "\x01\xFF";
        std::string text;
        for (unsigned int n = random_.below(most + 1); n > 0; --n) {
            text += random_.oneIn(8)
                        ? static_cast<char>(random_())
                        : characters[random_.below(static_cast<unsigned int>(characters.size()))];
        }
        return text;
    }

  private:
    std::string line() {
        switch (random_.below(10)) {
            case 0:
            case 1:
                return edge() + '[' + edge() + name() + (random_.oneIn(5) ? noise(3) : "") +
                       (random_.oneIn(5) ? "" : "]") + (random_.oneIn(5) ? noise(6) : edge());
            case 2: return edge() + (random_.oneIn(2) ? ';' : '#') + name() + '=' + value();
            case 3: return noise(40);
            case 4: return longLine();
            default:
                return edge() + name() + edge() + (random_.oneIn(2) ? '=' : ':') + edge() +
                       value() + edge();
        }
    }

    // What is dropped at the ends of a line.
    std::string edge() {
        static const std::string characters = " \t\r=: ";
        std::string text;
        while (random_.oneIn(3))
            text += characters[random_.below(static_cast<unsigned int>(characters.size()))];
        return text;
    }

    std::string lineEnd() {
        static const char* const ends[] = {"\n", "\n", "\n", "\r\n", "\n\n", "\r", "\n\r"};
        return ends[random_.below(std::size(ends))];
    }

    // A line whose end lies about the end of a first or second piece, and what may follow there.
    std::string longLine() {
        std::string text = name() + (random_.oneIn(4) ? "" : "=");
        const std::size_t length = (random_.oneIn(2) ? 511U : 1022U) - 6U + random_.below(12);
        const char filling = "x x=;[\0"[random_.below(7)];
        if (text.size() < length) text.append(length - text.size(), filling);
        return text + (random_.oneIn(2) ? line() : "");
    }

    // A comment that lets the next line begin about a border between two reads of the file.
    void padToBorder(std::string& text) {
        constexpr std::size_t readSize = 4096;
        const std::size_t border = (text.size() / readSize + 1) * readSize - 8 + random_.below(16);
        while (text.size() + 1 < border) {
            const std::size_t room = border - text.size() - 1;
            text += ';' + std::string(std::min<std::size_t>(room, 400) - 1, '-') + '\n';
            if (room == 1) break;
        }
    }

    Choices& random_;
};

}  // namespace kfl_test

#endif
