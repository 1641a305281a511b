#include "app/SearchRequest.h"

namespace gorvan {

Status SearchRequest::Check(const classData& data, const SearchOptions& options) {
  if (!data.IsOpen() || data.GetCdCount() <= 0) return Status::InvalidArgument(kNoDiscToSearch);
  return CatalogSearch::Check(options);
}

}  // namespace gorvan
