/// Marks what the library shows to programs and modules.
///
/// The library and adapter modules are built with hidden visibility. `ZAN_API` makes a class or a
/// function visible, with its type information, so that `catch` by type and `dynamic_cast` work
/// between the program, the library and the modules.
#ifndef ZANENGINE_INFRA_EXPORT_H
#define ZANENGINE_INFRA_EXPORT_H

#define ZAN_API __attribute__((visibility("default")))

#endif
