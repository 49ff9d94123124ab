// Marks what a shared library of this project exports; everything else stays hidden.
//
//   class MOX_PUBLIC Lamp { ... };          MOX_PUBLIC void lampFactory();

#pragma once

#define MOX_PUBLIC __attribute__((visibility("default")))
