#pragma once

namespace orvdiag {

/// How good a finding is, from the best to the worst.
enum class grade { ok, warn, fail };

}  // namespace orvdiag
