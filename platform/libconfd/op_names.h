// Names of operations for the trace.
#pragma once

#include "platform/wire/messages.h"

namespace standin {

const char* op_name(Op op);

}  // namespace standin
