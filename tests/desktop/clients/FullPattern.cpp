// A picture over all screens, each pixel of theirs in a colour of its own. Prints "focus" once it is there and active,
// and ends with the test.
#include "support/WaylandPattern.h"

#include <cstdio>

int main() {
    tavrine::testing::WaylandPattern pattern;
    if (!pattern.isThere())
        return 1;
    for (bool isTold = false; pattern.serve(std::chrono::seconds(1));) {
        if (!isTold && pattern.isActive()) {
            std::puts("focus");
            std::fflush(stdout);
            isTold = true;
        }
    }
    return 0;
}
