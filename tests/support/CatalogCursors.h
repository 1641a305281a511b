#pragma once
// CatalogCursors: a test's own disc and category cursors over a catalog, with
// short names for the common moves (go to, first, next, append, commit).

#include "catalog/classData.h"

namespace gorvan::test {

class CatalogCursors {
 public:
  explicit CatalogCursors(classData& data) : data_(data) {}

  classCd& Disc(int32_t id) {
    Bind();
    cd_.recordGet(id);
    return cd_;
  }
  classCd& FirstDisc() {
    Bind();
    cd_.MoveFirst();
    return cd_;
  }
  classCd& NextDisc() {
    cd_.MoveNext();
    return cd_;
  }
  classCd& NewDisc() {
    Bind();
    data_.GetCdAppend(cd_);
    return cd_;
  }
  bool CommitDisc() { return data_.GetCdCommit(cd_); }

  classCat& Cat(int32_t id) {
    Bind();
    cat_.recordGet(id);
    return cat_;
  }
  classCat& FirstCat() {
    Bind();
    cat_.MoveFirst();
    return cat_;
  }
  classCat& NextCat() {
    cat_.MoveNext();
    return cat_;
  }
  classCat& NewCat() {
    Bind();
    data_.GetCatAppend(cat_);
    return cat_;
  }
  bool CommitCat() { return data_.GetCatCommit(cat_); }

 private:
  void Bind() {
    if (cd_.file() != data_.file()) cd_.Bind(data_.file());
    if (cat_.file() != data_.file()) cat_.SetDefaultCatRec(data_.file());
  }

  classData& data_;
  classCd cd_;
  classCat cat_;
};

}  // namespace gorvan::test
