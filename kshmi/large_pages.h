#pragma once

namespace kshmi {

/// Lets the heap of this process grow in large pages, and keep what it once had: a model of many signals takes a
/// hundred thousand small pages otherwise, each of which costs a fault. To be called before there are threads. Nothing
/// changes where the system has no large pages, or where memory is rationed.
void useLargePages() noexcept;

}  // namespace kshmi
