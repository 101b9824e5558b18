#pragma once

namespace ryn {

/// True when the process has rights that its user's other programs lack: its token is elevated, or the system
/// does not tell.
[[nodiscard]] bool isElevatedProcess();

}  // namespace ryn
