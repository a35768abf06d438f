// Threads for asynchronous requests: one for each, detached, and nothing of it is left when it has ended.
//
// A process may end while requests are in flight. Its libraries take themselves apart then, which a request in another
// thread would not survive: so the end of the process abandons the requests and waits for that, a moment at most. No
// job starts from then on, as nobody would wait for it.
#pragma once

#include <atomic>
#include <functional>

namespace kv::file::s3 {

/// Runs the job, which must not throw, on a thread of its own with all signals blocked. Returns 0, or the error number
/// when there is no thread, ECANCELED once the process ends; then the job is gone without having run.
int startDetached(std::function<void()> job);

/// Becomes true when the process ends, and stays so: a job has to end what it does soon, let go of what others wait
/// for, and then call yieldToTheEnd.
const std::atomic<bool>& isProcessEnding() noexcept;

/// Where the process ends, does not return to the job, which would go on in a half-dismantled process. Nothing that the
/// job still holds is freed then.
void yieldToTheEnd() noexcept;

}  // namespace kv::file::s3
