#pragma once
// SearchRequest: the refusals before a catalog search, in the search
// window's order: an empty catalog, an empty text, no field to search.

#include "catalog/Status.h"
#include "catalog/classData.h"
#include "search/CatalogSearch.h"

namespace gorvan {

inline constexpr const char* kNoDiscToSearch =
    "You need at least one CD or folder scanned before you can search for something!!";

class SearchRequest {
 public:
  // OK, or InvalidArgument with the message to show.
  static Status Check(const classData& data, const SearchOptions& options);
};

}  // namespace gorvan
