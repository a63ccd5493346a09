// Statuses of several calls, of which the first failure counts.
#pragma once

#include "zspsc/types.h"

namespace zsp::voice {

class Steps {
  public:
    void add(ZspStatus status)
    {
        if (first_ == zspStsNoErr) first_ = status;
    }
    [[nodiscard]] bool failed() const { return first_ < zspStsNoErr; }
    [[nodiscard]] ZspStatus status() const { return first_; }

  private:
    ZspStatus first_ = zspStsNoErr;
};

} // namespace zsp::voice
