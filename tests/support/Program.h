#ifndef STRINGRESOLVER_TESTS_SUPPORT_PROGRAM_H
#define STRINGRESOLVER_TESTS_SUPPORT_PROGRAM_H

#include "tests/support/FakeHost.h"

namespace testsupport {

/// Fills `host` with a small C program. Types: every basic type under its C name, `structS`,
/// `structIn`, `structNode`, `ZV_Lorn` (4 bytes unsigned). Labels and what lies there:
///
///   plain    untyped, 5                    zero     untyped, 0
///   c  0x1000 int8  -1                     uc  0x1008 uint8  200
///   sh 0x1010 int16 -2                     us  0x1018 uint16 65535
///   i  0x1020 int32 -5                     u   0x1028 uint32 7
///   ll 0x1030 int64 -9                     ull 0x1038 uint64 0xfedcba9876543210
///   f  0x1040 float 1.5                    d   0x1048 double 2.25
///   j  0x10c0 int32 3                      bad 0x9000 int32, not readable
///   p  0x1050 int*   = 0x2000              pp  0x1058 int**  = 0x1050
///   pc 0x1060 char*  = 0x2100              ps  0x1068 struct S* = 0x3000
///   head 0x1070 struct Node* = 0x3100
///   arr   0x2000 int[4] 10 20 30 40        chars 0x2100 char[8] "Hello"
///   ptrs  0x2180 int*[2] = 0x2000, 0x2008
///   m     0x2200 int[2][4] 0 1 2 3 / 10 11 12 13
///   s     0x3000 struct S { int a = 100; int b = 101; struct In in = {102, 103}; int y = 104;
///                           short h[2] = {105, 106}; }, 24 bytes
///   ss    0x3200 struct S[2], only ss[1].b = 201 is not zero
///   Node  { int v; struct Node* next; }: 0x3100 {1, 0x3140}, 0x3140 {2, 0}
///
/// The second memory space holds 777 (4 bytes) at 0x100. Fields' offsets follow the host's pointer
/// size, except that addresses must fit it: not for 1-byte pointers.
void LoadProgram(FakeHost& host);

}  // namespace testsupport

#endif  // STRINGRESOLVER_TESTS_SUPPORT_PROGRAM_H
