// SPDX-License-Identifier: MIT
#error "the library includes a header of the program"
