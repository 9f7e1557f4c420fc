# Turns the comments of our headers into Doxygen's: a line of comment belongs to what follows it, a comment behind
# a declaration to what stands before it.
s|^( *)// ?(.*)$|\1/// \2|
s|([;,{}]) *// (.*)$|\1 ///< \2|
s|^( *[A-Z][A-Z0-9_]* = [0-9]+) +// (.*)$|\1 ///< \2|
# The first comment of a file describes the file.
1s|^/// |/// @file\n/// |
