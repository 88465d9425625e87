// libut: the interrupt flag.

#include "host/standalone/array.h"

using standalone::book, standalone::session;

bool utSetInterruptEnabled (bool enabled)
{
    return std::exchange (session ().interrupt_enabled, enabled);
}

bool utIsInterruptPending ()
{
    book ().check_thread ("utIsInterruptPending");
    if (++session ().interrupt_polls == session ().interrupting_poll)
        session ().interrupt_pending = true;
    return session ().interrupt_pending;
}

void utSetInterruptPending (bool pending)
{
    session ().interrupt_pending = pending;
}
