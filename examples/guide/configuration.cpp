// Settings from device.ini, and pairs with defaults from upload.conf.
#include <climits>
#include <cstdio>
#include <cstring>

#include "kfl/IniFileParser.h"
#include "kfl/KeyValue.h"

namespace {

// Values keep the blanks behind their '='.
const char* withoutBlanks(const char* text) { return text + std::strspn(text, " \t"); }

// getBool tells that the key is there, not what it says.
bool isYes(const char* text) { return text && kfl::compareNoCase(withoutBlanks(text), "yes") == 0; }

}  // namespace

int main() {
    kfl::IniFileParser config;
    if (!config.parseFile("device.ini")) return 1;
    // The key comes first, the section second; "" holds the keys before the first header.
    std::printf("site: %s\n", withoutBlanks(config.getString("site", "")));
    std::printf("hello: %d\n", config.getInt("hello-interval", "timers"));
    std::printf("factor: %.1f\n", static_cast<double>(config.getFloat("Retry-Factor", "TIMERS")));
    int dead = config.getInt("dead-interval", "timers");
    if (dead == INT_MIN) dead = 40;  // the mark of a missing key
    std::printf("dead: %d\n", dead);
    std::printf("telnet: getBool %d, meant %d\n", config.getBool("telnet", "services"),
                isYes(config.getString("telnet", "services")));

    char hostKey[] = "host", hostDefault[] = "localhost", userKey[] = "user", user[] = "nobody";
    kfl::KeyValuePair host(hostKey, hostDefault), login(userKey, user);
    kfl::KeyValuePair* pairs[] = {&host, &login, nullptr};
    const int result = kfl::KeyValueParser::parse("upload.conf", pairs);
    std::printf("%d: %s as %s\n", result, withoutBlanks(host.value.c_str()), login.value.c_str());
    return 0;
}
