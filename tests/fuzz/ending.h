// Catches the endings of a run. Only driver/base/fatal calls exit(). Targets that run such code are linked
// with
// --wrap=exit, so that exit() throws an exception instead and the process goes on.
#pragma once

namespace fuzz {

struct Ended {
    int status;
};

/// While true, exit throws ENDED; else it ends the process.
extern bool Endings_caught;

/// Runs `what` to an ending or to its own end. Returns the exit status, or -1 when there was no ending.
template <class What>
int status_of(What what)
{
    int status = -1;
    Endings_caught = true;
    try {
        what();
    } catch (const Ended& ended) {
        status = ended.status;
    }
    Endings_caught = false;
    return status;
}

} // namespace fuzz
