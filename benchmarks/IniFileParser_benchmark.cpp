// INI files: parsing one, and looking up every key in it, beside inih, iniparser, GLib's GKeyFile,
// SimpleIni, POCO and ELL (those of them that are installed), and looking up beside a bare walk.
// "wide" files have 20 keys a section, "deep" ones all keys in one section.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/contest.h"
#include "kfl/IniFileParser.h"

#ifdef KFL_HAVE_glib
#include <glib.h>
#endif
#ifdef KFL_HAVE_ell
#include "benchmarks/ell.h"
#endif
#ifdef KFL_HAVE_inih
#include <INIReader.h>
#endif
#ifdef KFL_HAVE_iniparser
#include <iniparser/iniparser.h>
#endif
#ifdef KFL_HAVE_simpleini
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#endif
#ifdef KFL_HAVE_poco
#include <Poco/Util/IniFileConfiguration.h>
#endif

namespace {

using kfl_benchmark::Contest;

struct Key {
    std::string section;
    std::string name;
    // How POCO and iniparser address it.
    std::string dotted;
    std::string colons;
};

struct File {
    std::string path;
    std::vector<Key> keys;
};

constexpr const char* topics[] = {"address", "interval", "timeout", "retries",  "enabled",
                                  "path",    "username", "gateway", "priority", "mode"};

File write(const std::string& folder, unsigned int count, unsigned int keysInSection) {
    File file{folder + "/kfl-benchmark.ini." + std::to_string(count) + '.' +
                  std::to_string(keysInSection),
              {}};
    kfl_benchmark::Numbers numbers(count);
    std::FILE* const out = std::fopen(file.path.c_str(), "w");
    if (!out) std::exit(1);
    std::string section;
    for (unsigned int i = 0; i < count; ++i) {
        if (i % keysInSection == 0) {
            section = "unit-" + std::to_string(i / keysInSection);
            std::fprintf(out, "%s[%s]\n", i ? "\n" : "# settings\n", section.c_str());
        }
        const std::string name = topics[i % 10] + std::to_string(i % keysInSection);
        std::fprintf(out, "%s=value %u of %s\n", name.c_str(), numbers.next(1000000),
                     topics[i % 7]);
        file.keys.push_back({section, name, section + '.' + name, section + ':' + name});
    }
    std::fclose(out);
    return file;
}

// Each reader parses a file when it is made, and gives the value of a key.

class Ours {
  public:
    explicit Ours(const File& file) { parser_.parseFile(file.path.c_str()); }
    const char* get(const Key& key) {
        return parser_.getValue(key.name.c_str(), key.section.c_str());
    }
    const kfl::IniFileParser& parser() const { return parser_; }

  private:
    kfl::IniFileParser parser_;
};

// The least that a look-up can do where all that stands in front of an entry is passed: of each
// name the length is compared, where it is equal the last two characters, and then the rest.
class Bare {
  public:
    explicit Bare(const File& file) : ours_(file) {}
    const char* get(const Key& key) {
        const auto* const section =
            passTo<kfl::st_section>(ours_.parser().sectionList(), key.section);
        return passTo<kfl::st_key>(section->keys, key.name)->value.c_str();
    }

  private:
    // It must be there, and its name have two characters.
    template <class Record>
    static const Record* passTo(const kfl::VoidPtrOrderedCollection& records,
                                const std::string& name) {
        const auto length = static_cast<unsigned int>(name.size());
        const char* const lastTwo = name.data() + length - 2;
        for (void* const* slot = records.data();; ++slot) {
            const auto* const record = static_cast<const Record*>(*slot);
            const char* const text = record->name.c_str();
            if (record->name.length() == length &&
                std::memcmp(text + length - 2, lastTwo, 2) == 0 &&
                std::memcmp(text, name.data(), length) == 0) {
                return record;
            }
        }
    }

    Ours ours_;
};

#ifdef KFL_HAVE_glib
class Glib {
  public:
    explicit Glib(const File& file) : file_(g_key_file_new()) {
        g_key_file_load_from_file(file_, file.path.c_str(), G_KEY_FILE_NONE, nullptr);
    }
    ~Glib() {
        g_free(value_);
        g_key_file_free(file_);
    }
    const char* get(const Key& key) {
        g_free(value_);
        return value_ = g_key_file_get_value(file_, key.section.c_str(), key.name.c_str(), nullptr);
    }

  private:
    GKeyFile* file_;
    char* value_ = nullptr;
};
#endif

#ifdef KFL_HAVE_ell
class Ell {
  public:
    explicit Ell(const File& file) : settings_(l_settings_new()) {
        l_settings_load_from_file(settings_, file.path.c_str());
    }
    ~Ell() { l_settings_free(settings_); }
    const char* get(const Key& key) {
        return l_settings_get_value(settings_, key.section.c_str(), key.name.c_str());
    }

  private:
    l_settings* settings_;
};
#endif

#ifdef KFL_HAVE_inih
class Inih {
  public:
    explicit Inih(const File& file) : reader_(file.path) {}
    const char* get(const Key& key) {
        value_ = reader_.Get(key.section, key.name, "");
        return value_.c_str();
    }

  private:
    INIReader reader_;
    std::string value_;
};
#endif

#ifdef KFL_HAVE_iniparser
class Iniparser {
  public:
    explicit Iniparser(const File& file) : all_(iniparser_load(file.path.c_str())) {}
    ~Iniparser() { iniparser_freedict(all_); }
    const char* get(const Key& key) {
        return iniparser_getstring(all_, key.colons.c_str(), nullptr);
    }

  private:
    dictionary* all_;
};
#endif

#ifdef KFL_HAVE_simpleini
class SimpleIni {
  public:
    explicit SimpleIni(const File& file) { ini_.LoadFile(file.path.c_str()); }
    const char* get(const Key& key) { return ini_.GetValue(key.section.c_str(), key.name.c_str()); }

  private:
    CSimpleIniA ini_;
};
#endif

#ifdef KFL_HAVE_poco
class Poco {
  public:
    explicit Poco(const File& file) : ini_(new ::Poco::Util::IniFileConfiguration(file.path)) {}
    const char* get(const Key& key) {
        value_ = ini_->getString(key.dotted);
        return value_.c_str();
    }

  private:
    ::Poco::AutoPtr<::Poco::Util::IniFileConfiguration> ini_;
    std::string value_;
};
#endif

using SharedFile = std::shared_ptr<const File>;

// The first and the last key show that all between was read.
template <class Reader>
void enterParse(Contest& contest, const char* who, const SharedFile& file) {
    contest.enter(who, [file](auto& sees) {
        Reader reader(*file);
        sees.text(reader.get(file->keys.front()));
        sees.text(reader.get(file->keys.back()));
    });
}

template <class Reader>
void enterLookUp(Contest& contest, const char* who, const SharedFile& file) {
    contest.enter(who, [file, reader = std::make_shared<Reader>(*file)](auto& sees) {
        for (const Key& key : file->keys) sees.text(reader->get(key));
    });
}

void enterAll(const char* shape, const SharedFile& file) {
    const std::string end = ' ' + std::to_string(file->keys.size()) + ' ' + shape;
    Contest parse("ini: parse" + end);
    Contest lookUp("ini: look up" + end);
    const auto both = [&](const char* who, auto* reader) {
        using Reader = std::remove_pointer_t<decltype(reader)>;
        enterParse<Reader>(parse, who, file);
        enterLookUp<Reader>(lookUp, who, file);
    };
    both("kfl", static_cast<Ours*>(nullptr));
    enterLookUp<Bare>(lookUp, "bare", file);
#ifdef KFL_HAVE_ell
    both("ell", static_cast<Ell*>(nullptr));
#endif
#ifdef KFL_HAVE_glib
    both("glib", static_cast<Glib*>(nullptr));
#endif
#ifdef KFL_HAVE_inih
    both("inih", static_cast<Inih*>(nullptr));
#endif
#ifdef KFL_HAVE_iniparser
    both("iniparser", static_cast<Iniparser*>(nullptr));
#endif
#ifdef KFL_HAVE_simpleini
    both("simpleini", static_cast<SimpleIni*>(nullptr));
#endif
#ifdef KFL_HAVE_poco
    // Its look-up walks all keys, of all sections: 20,000 of them take minutes.
    if (file->keys.size() <= 1000) both("poco", static_cast<Poco*>(nullptr));
#endif
}

// What a walk costs for each entry that is passed: the last key of a section, over and over. It is
// compared with a bare walk, and with one that loads the length of each name and nothing else.
void enterWalk(const SharedFile& file) {
    Contest contest("ini: walk past " + std::to_string(file->keys.size() - 1) + " keys");
    const Key& last = file->keys.back();
    const auto ours = std::make_shared<Ours>(*file);
    contest.enter("kfl", [&last, ours](auto& sees) { sees.text(ours->get(last)); });
    const auto bare = std::make_shared<Bare>(*file);
    contest.enter("bare", [&last, bare](auto& sees) { sees.text(bare->get(last)); });
    contest.enter("lengths", [&last, ours](auto& sees) {
        const auto length = static_cast<unsigned int>(last.name.size());
        const auto* const section =
            static_cast<const kfl::st_section*>(ours->parser().sectionList().data()[1]);
        const kfl::st_key* found = nullptr;
        for (unsigned int i = 0, count = section->keys.count(); i < count; ++i) {
            const auto* const key = static_cast<const kfl::st_key*>(section->keys.data()[i]);
            if (key->name.length() == length) found = key;
        }
        sees.text(found->value.c_str());
    });
}

}  // namespace

int main(int count, char** arguments) {
    char folder[] = "/tmp/kfl-benchmark-XXXXXX";
    if (!mkdtemp(folder)) return 1;
    std::vector<SharedFile> files;
    const auto made = [&](unsigned int keys, unsigned int keysInSection) {
        return files.emplace_back(std::make_shared<File>(write(folder, keys, keysInSection)));
    };
    for (const unsigned int keys : {10U, 100U, 1000U, 20000U}) enterAll("wide", made(keys, 20));
    for (const unsigned int keys : {100U, 1000U}) enterAll("deep", made(keys, keys));
    enterWalk(made(1001, 1001));
    const int result = kfl_benchmark::runAll(count, arguments);
    for (const SharedFile& file : files) unlink(file->path.c_str());
    rmdir(folder);
    return result;
}
