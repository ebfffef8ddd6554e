// Which thread an application's object stands for.
#pragma once

namespace tvutil2 {

/// The calling thread is the application's from now on.
void application_starts_here();

}  // namespace tvutil2
