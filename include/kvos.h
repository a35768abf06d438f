// The umbrella of the operating-system families. Each family has a header of its own under kvos/; include just those
// you need, or this one for all.
//
// What holds everywhere, unless a call says otherwise:
//
// - Texts are UTF-8, zero-terminated and not kept after the call. Pointers are not null.
// - Results are kept call by call and are not uniform: 1 or 0, 0 or -1, 0xFFFFFFFF, the handle -1. Each call names its
//   own.
// - What a kvOS...Create... or ...Open... call returns is the caller's until the matching close. A handle's value is
//   the address of its record: a second close, or any use after the close, is undefined and is not detected.
// - A file or find handle belongs to one thread at a time. Calls that share nothing may run on any thread.
// - "Last error" is the calling thread's errno.
//
// The caller's duties, which nothing checks:
//
// - A buffer for a path, or for a part of one, holds 4096 bytes; one for the extension of a name at least 256. What the
//   library writes into them never exceeds that: a path that does not fit is refused, or its buffer left empty, as the
//   call says.
// - No thread is cancelled (pthread_cancel) while it may be in a call of the library, but for waits for an event: the
//   process would end. A host's callback leaves by returning.
// - Any other buffer holds what its count says, or what the call's docstring says.
// - Where a docstring says "not checked", a wrong handle or pointer is undefined behaviour.
#ifndef KVOS_H
#define KVOS_H

#include "kvos/attributes.h"
#include "kvos/compression.h"
#include "kvos/conversion.h"
#include "kvos/copy.h"
#include "kvos/encoding.h"
#include "kvos/export.h"
#include "kvos/file.h"
#include "kvos/find.h"
#include "kvos/guid.h"
#include "kvos/language.h"
#include "kvos/lcd.h"
#include "kvos/locator.h"
#include "kvos/machine.h"
#include "kvos/media_names.h"
#include "kvos/memory.h"
#include "kvos/naming.h"
#include "kvos/playlist.h"
#include "kvos/process.h"
#include "kvos/rest.h"
#include "kvos/s3.h"
#include "kvos/serial.h"
#include "kvos/shared_memory.h"
#include "kvos/sync.h"
#include "kvos/system.h"
#include "kvos/text.h"
#include "kvos/thread.h"
#include "kvos/time.h"
#include "kvos/url.h"
#include "kvos/wide_string.h"

#endif
