// What the agent can be told, and where it looks that up: kfl::IniFileParser at work.
//
//     agent::Settings settings;
//     if (!settings.read("/etc/agent.ini")) return complain();
//     startTimer(settings.number("timers", "hello-interval"));
#ifndef AGENT_SETTINGS_H
#define AGENT_SETTINGS_H

#include "kfl/IniFileParser.h"

namespace agent {

// How a value is read. In the file everything is text.
enum class Kind { text, number, decimal, onOff };

// One thing that the agent can be told.
struct Setting {
    const char* section;
    const char* key;
    Kind kind;
    // What holds where the file says nothing; null where the agent does without.
    const char* builtIn;
};

// All there are, section by section.
extern const Setting knownSettings[];
extern const unsigned int knownSettingCount;

class Settings {
  public:
    // Reads the file. Returns false, with the reason in errno, when it cannot be opened.
    bool read(const char* path);

    // The value of a known setting: from the file, else the built-in one. Texts stay valid as long
    // as these settings, and are null where nobody gave one.
    const char* text(const char* section, const char* key);
    int number(const char* section, const char* key);
    float decimal(const char* section, const char* key);
    bool isOn(const char* section, const char* key);

    // What the file says, as the library gives it to the agent.
    kfl::IniFileParser& file() { return file_; }

  private:
    kfl::IniFileParser file_;
};

// The known setting of that name, in any case, or null.
const Setting* findSetting(const char* section, const char* key);

}  // namespace agent

#endif
