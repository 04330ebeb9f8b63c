// The settings. Shows: a table of all that a host can be told, look-ups with the key first, the
// mark of a missing key, values that keep their blanks, and words for yes and no.
#include "settings.h"

#include <cfloat>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace agent {

const Setting knownSettings[] = {
    // Keys that stand before the first header of the file are in the section "".
    {"", "site", Kind::text, "unknown"},
    {"", "contact", Kind::text, nullptr},
    {"", "config-revision", Kind::number, "0"},

    {"interfaces", "wan", Kind::text, "eth0"},
    {"interfaces", "wan-mtu", Kind::number, "1500"},
    {"interfaces", "wan-rate-limit", Kind::decimal, "100"},
    {"interfaces", "wan-dhcp", Kind::onOff, "yes"},
    {"interfaces", "lan", Kind::text, "eth1"},
    {"interfaces", "lan-mtu", Kind::number, "1500"},
    {"interfaces", "lan-address", Kind::text, "192.168.1.1"},
    {"interfaces", "lan-prefix", Kind::number, "24"},
    {"interfaces", "voice", Kind::text, nullptr},
    {"interfaces", "voice-lines", Kind::number, "2"},
    {"interfaces", "voice-gain", Kind::decimal, "0"},

    {"timers", "hello-interval", Kind::number, "10"},
    {"timers", "dead-interval", Kind::number, "40"},
    {"timers", "retry-first", Kind::decimal, "1"},
    {"timers", "retry-factor", Kind::decimal, "2"},
    {"timers", "retry-jitter", Kind::decimal, "0.1"},
    {"timers", "retry-longest", Kind::number, "60"},
    {"timers", "link-hold-down", Kind::number, "2"},
    {"timers", "statistics", Kind::number, "300"},
    {"timers", "clock-check", Kind::number, "3600"},

    {"peers", "primary", Kind::text, nullptr},
    {"peers", "primary-port", Kind::number, "7070"},
    {"peers", "primary-weight", Kind::decimal, "1"},
    {"peers", "secondary", Kind::text, nullptr},
    {"peers", "secondary-port", Kind::number, "7070"},
    {"peers", "secondary-weight", Kind::decimal, "0"},
    {"peers", "login", Kind::text, "device"},
    {"peers", "verify", Kind::onOff, "on"},
    {"peers", "keepalive", Kind::onOff, "on"},

    {"logging", "facility", Kind::text, "daemon"},
    {"logging", "level", Kind::number, "5"},
    {"logging", "mark-interval", Kind::number, "0"},
    {"logging", "trace-calls", Kind::onOff, "off"},
    {"logging", "trace-links", Kind::onOff, "off"},
    {"logging", "trace-timers", Kind::onOff, "off"},
    {"logging", "file", Kind::text, nullptr},
    {"logging", "file-size", Kind::number, "65536"},
    {"logging", "file-count", Kind::number, "2"},

    {"services", "control-socket", Kind::text, "/run/agent.socket"},
    {"services", "discovery-port", Kind::number, "7071"},
    {"services", "self-test", Kind::text, nullptr},
    {"services", "helper", Kind::text, nullptr},
    {"services", "helper-output", Kind::text, nullptr},

    {"backup", "enabled", Kind::onOff, "no"},
    {"backup", "path", Kind::text, "/var/lib/agent"},
    {"backup", "keep", Kind::number, "1"},
    {"backup", "compress-level", Kind::decimal, "6"},

    {"downloads", "firmware", Kind::text, nullptr},
    {"downloads", "prompts", Kind::text, nullptr},
    {"downloads", "phonebook", Kind::text, nullptr},
    {"downloads", "defaults", Kind::text, "defaults.conf"},
};

const unsigned int knownSettingCount = sizeof knownSettings / sizeof knownSettings[0];

namespace {

const char* builtIn(const char* section, const char* key) {
    const Setting* const setting = findSetting(section, key);
    return setting ? setting->builtIn : nullptr;
}

}  // namespace

const Setting* findSetting(const char* section, const char* key) {
    for (const Setting& setting : knownSettings) {
        if (kfl::compareNoCase(setting.section, section) == 0 &&
            kfl::compareNoCase(setting.key, key) == 0) {
            return &setting;
        }
    }
    return nullptr;
}

bool Settings::read(const char* path) { return file_.parseFile(path); }

// All look-ups of the library take the key first and the section second.

const char* Settings::text(const char* section, const char* key) {
    const char* const value = file_.getString(key, section);
    if (!value) return builtIn(section, key);
    // The library keeps the blanks between the '=' and the value.
    return value + std::strspn(value, " \t");
}

int Settings::number(const char* section, const char* key) {
    const int value = file_.getInt(key, section);
    if (value != INT_MIN) return value;  // the mark of a missing key
    return std::atoi(builtIn(section, key));
}

float Settings::decimal(const char* section, const char* key) {
    const float value = file_.getFloat(key, section);
    if (value != FLT_MIN) return value;  // the mark of a missing key
    return static_cast<float>(std::atof(builtIn(section, key)));
}

bool Settings::isOn(const char* section, const char* key) {
    // getBool would not do: it says that the key is there, and is true for "no" as well.
    const char* const word = text(section, key);
    static const char* const yes[] = {"yes", "on", "true", "1"};
    for (const char* const accepted : yes) {
        if (kfl::compareNoCase(word, accepted) == 0) return true;
    }
    return false;
}

}  // namespace agent
