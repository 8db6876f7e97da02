// What a node is, for the client's help and completion.
#pragma once

#include "platform/standin/schema/schema.h"
#include "platform/wire/frame.h"

namespace standin {

// Appends the results of nb_describe. Keys on the way may be missing. Throws Refusal (badpath).
FrameWriter& put_description(FrameWriter&& out, const Schema& schema, const Path& path);

}  // namespace standin
