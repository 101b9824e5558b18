#pragma once

namespace ryn {

/// Narrows where this process looks for DLLs and programs, so that nothing planted beside the
/// program or in the current folder is loaded: libraries come from the system folder only, the
/// current folder leaves the search, and SearchPathW looks there last, for good. Functions that an
/// old Windows lacks are skipped.
void narrowDllSearch();

}  // namespace ryn
