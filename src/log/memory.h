// What happens when there is no more memory: the run ends as after any other
// failure, with a message, and what was stored is kept.
#ifndef VEK_LOG_MEMORY_H_
#define VEK_LOG_MEMORY_H_

namespace vek {

// From here on an allocation that fails ends the run by abort_run(), wherever
// it is: it is no exception that somebody on the way, as a stream, could take
// for something else. Some memory is kept aside, for the log, the journal and
// the store's index, and is given back then. If it is not enough the process
// ends at once, and what was not synced is lost. In any thread but the first an
// allocation throws std::bad_alloc, as elsewhere.
//
// GLib's memory is not watched: the file store does that for itself.
void watch_memory();

// For what has to be saved while the run ends: from now on the reserve serves
// all, and when that is used up too, the process ends at once.
void give_back_reserve();

}  // namespace vek

#endif  // VEK_LOG_MEMORY_H_
