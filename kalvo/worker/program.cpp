// The worker program. libkalvo64 starts it; nobody else does.

#include "kalvo/worker/service.h"

int main ()
{
    return klv::run_worker ();
}
