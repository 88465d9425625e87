// The result record: output 2 of a call.
#pragma once

#include "gateway/request.h"

// Makes the record with the fields that the request needs, and fills them. A failure becomes the request's code.
void make_result (Request& request);
