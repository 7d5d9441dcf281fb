// Looks at the log and at what the plugin holds, taken in the middle of a call.
#ifndef CORVANE_TESTS_FAULTS_LOOK_FIXTURE_H_
#define CORVANE_TESTS_FAULTS_LOOK_FIXTURE_H_

#include <string>

#include "faults_fixture.h"

namespace corvane_test {

class LookTest : public FaultsTest {
 protected:
  // The GLib log so far, a line each.
  Lines Logged() {
    Lines lines;
    for (const GlibLine& line : glib().Lines()) lines.push_back(line.message);
    return lines;
  }

  // What the GLib log holds, and what the plugin, at the calls that `rule`
  // strikes; the last one counts.
  struct Seen {
    Lines log;
    Held held;
  };
  Rule Look(Rule rule, Seen* seen) {
    return rule.Before([this, seen](PluginCall&) {
      *seen = {Logged(), HeldNow()};
    });
  }
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_LOOK_FIXTURE_H_
