#!/usr/bin/sed -Ef
# The manual pages that a page of docs/ or a header names, as links. Titles stay: they also appear in the page tree.
/^# /!{
  s/zelvane[-.](cfg|log|schedule|language|browse|conf)\(5\)/[&](@ref zelvane_\1)/g
  s/zelvane\(3\)/[&](@ref zelvane)/g
}
