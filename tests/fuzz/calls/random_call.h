// Calls of kalvoopt made at random, each input a text in the tests' notation.
#pragma once

#include <string>
#include <vector>

#include "tests/fuzz/random.h"

namespace fuzz {

struct RandomCall {
    std::vector<std::string> inputs;
    int outputs = 2;
    long failing_allocation = 0;    // the number of the piece of memory that is not to be had; 0: none
    long interrupting_poll = 0;     // when Ctrl-C is pressed

    std::string text () const;
};

RandomCall random_call (Random& random);
std::string odd_value (Random& random);

// The functions of the session that callback records name.
inline const std::vector<std::string> functions =
    pieces_of ("quiet|nothing|stopping|failing|odd|pressing|again", '|');

}
