# SPDX-License-Identifier: Apache-2.0
# Takes the groups out of C++ headers. Doxygen 1.9.8 describes a member of a class only in the group of
# its definition, where breathe does not look for it. The group for Eigen has no such members.
/@defgroup cpp_eigen/,$b
/^\/\*\* @\} \*\/$/d
/@(addtogroup|defgroup) /,/@\{/s/@[^*]*//
