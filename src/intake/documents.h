// The profiles of a collection's documents, by name, for what learns and tests.
//
// Derived classes decide where they are stored (in vek, the data directory).
// Those that were asked for stay in memory, with their active terms only.
#ifndef VEK_INTAKE_DOCUMENTS_H_
#define VEK_INTAKE_DOCUMENTS_H_

#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>

#include "classes/termset.h"
#include "intake/docprof.h"

namespace vek {

class Documents {
 public:
  using Cache = std::map<std::string, std::unique_ptr<DocProfile>, std::less<>>;

  // Profiles are filtered by the active terms at the time when they are asked
  // for first; with no active term at all, not filtered. `active_terms` must
  // outlive this object.
  explicit Documents(const TermSet &active_terms)
      : active_terms_(active_terms) {}
  Documents(const Documents &) = delete;
  Documents &operator=(const Documents &) = delete;
  virtual ~Documents() = default;

  // Fills the empty profile with all of the document's terms, past the cache.
  // The document must be stored; what happens otherwise is up to the derived
  // class.
  virtual void read_profile(const std::string &name, DocProfile &profile) = 0;

  // The document's profile, with only its active terms. Owned by the cache and
  // valid until it is cleared.
  DocProfile *get(const std::string &name) {
    // Documents are mostly asked for in the order of their names.
    auto place = last_ == cache_.end() ? last_ : std::next(last_);
    if (place == cache_.end() || place->first != name)
      place = cache_.lower_bound(name);
    last_ = place;
    if (place != cache_.end() && place->first == name)
      return place->second.get();
    // Read into a buffer and copied, so that the profile that is kept takes no
    // room for the terms that were dropped.
    read_buffer_.clear();
    read_profile(name, read_buffer_);
    read_buffer_.select_active(active_terms_);
    last_ = cache_.emplace_hint(place, name,
                                std::make_unique<DocProfile>(read_buffer_));
    return last_->second.get();
  }

  // The profiles read so far, by document name.
  const Cache &cache() const { return cache_; }
  void clear_cache() {
    cache_.clear();
    last_ = cache_.end();
  }
  // Frees the profiles and leaves their names.
  void release_profiles() {
    for (auto &[name, profile] : cache_)
      profile.reset();
  }

 private:
  const TermSet &active_terms_;
  Cache cache_;
  Cache::iterator last_ = cache_.end();  // asked for
  DocProfile read_buffer_;
};

}  // namespace vek

#endif  // VEK_INTAKE_DOCUMENTS_H_
