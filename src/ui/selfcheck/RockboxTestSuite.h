#pragma once

#include <ostream>

namespace kestrune {

// The self-check behind "kestrune --test": quick checks of the reader, the parser, the playlist writer,
// the dot-file cleaner and the language switch, one line per group and a summary. Touches nothing of the
// user's: files go to a temporary folder and the language to a temporary store.
class RockboxTestSuite {
public:
    // Returns whether every check passed.
    static bool runAllTests(std::ostream &out);
};

} // namespace kestrune
