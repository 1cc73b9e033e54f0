// SPDX-License-Identifier: MIT
// Nothing but the headers that every test program is compiled with; see CMakeLists.txt.
int main() {}
