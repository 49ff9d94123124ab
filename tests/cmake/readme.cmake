# Compares the first C++ listing of README.md and the output shown after it with the files that
# they are copies of. A comment just before each block names its file:
#   <!-- listing: examples/x.cpp -->      <!-- output: examples/x.expected -->
cmake_minimum_required(VERSION 3.25)

file(READ ${SOURCE_DIR}/README.md readme)

# Sets <result> to the text between the fence that opens at the beginning of <text> and its end.
function(read_block text result)
  if(NOT text MATCHES "^```[a-z]*\n")
    message(FATAL_ERROR "README.md: no code block follows the comment at once")
  endif()
  string(LENGTH "${CMAKE_MATCH_0}" begin)
  string(SUBSTRING "${text}" ${begin} -1 text)
  string(FIND "${text}" "\n```\n" end)
  if(end EQUAL -1)
    message(FATAL_ERROR "README.md: a code block has no end")
  endif()
  math(EXPR end "${end} + 1")
  string(SUBSTRING "${text}" 0 ${end} block)
  set(${result} "${block}" PARENT_SCOPE)
endfunction()

# Compares the block after the comment <!-- <kind>: <file> --> with that file; sets <position> to
# where the block begins.
function(check_block kind position)
  if(NOT readme MATCHES "<!-- ${kind}: (examples/[A-Za-z0-9_.-]+) -->\n+")
    message(FATAL_ERROR "README.md: no comment <!-- ${kind}: examples/... -->")
  endif()
  set(comment "${CMAKE_MATCH_0}")
  set(file ${CMAKE_MATCH_1})
  string(FIND "${readme}" "${comment}" begin)
  string(LENGTH "${comment}" length)
  math(EXPR begin "${begin} + ${length}")
  string(SUBSTRING "${readme}" ${begin} -1 text)
  read_block("${text}" shown)
  file(READ ${SOURCE_DIR}/${file} expected)
  if(NOT "${shown}" STREQUAL "${expected}")
    message(FATAL_ERROR "README.md: the block ${kind} differs from ${file}")
  endif()
  set(${position} ${begin} PARENT_SCOPE)
endfunction()

check_block(listing listing_position)
check_block(output output_position)

string(FIND "${readme}" "```cpp\n" first_listing)
if(NOT first_listing EQUAL listing_position)
  message(FATAL_ERROR "README.md: the first C++ listing has no comment <!-- listing: ... -->")
endif()
if(output_position LESS listing_position)
  message(FATAL_ERROR "README.md: the output stands before the listing")
endif()
