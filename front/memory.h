// Allocation that never returns null, string copies, and the cutters that strip a known prefix from
// a line in place. Blocks belong to whoever holds the pointer.

#pragma once

#include <cstddef>

/// Allocates a zero-filled block. When memory runs out the process ends with exit status 1 after
/// one system-log record.
void *xmalloc(std::size_t size);

/// Resizes a block (null: allocates one); fails like xmalloc(). The added bytes are not zeroed.
void *xrealloc(void *block, std::size_t size);

/// Releases a block; null is allowed.
void xfree(void *block);

/// Copies a string into a new block.
/// @param ignored neither read nor freed; callers pass the field's previous value.
/// @param source the string to copy, not null.
char *xstrdup(const char *ignored, const char *source);

/// Copies a string into a new block; null and empty sources give an empty string.
/// @param release_source non-zero: the source is freed afterwards.
char *xstrdup_free(char *source, int release_source);

/// Copies at most the first count characters of a string into a new block of count + 1 bytes.
/// @param ignored neither read nor freed.
char *xstrndup(const char *ignored, const char *source, std::size_t count);

/// Like xstrdup_free(), but copies at most the first count characters.
char *xstrndup_free(char *source, std::size_t count, int release_source);

/// Returns a new string: first followed by second, null counting as empty.
char *xstrconcat(const char *first, const char *second);

/// Like xstrconcat(), then frees the arguments whose flags are non-zero.
char *xstrconcat_free(char *first, char *second, int release_first, int release_second);

/// Removes the first length characters in place and keeps the rest, line feed included.
/// A null or empty text is reported and left alone; a text shorter than length is reported and
/// made empty. The other cutters check alike.
void cut_message_to_preserve_newline(char *text, std::size_t length);

/// Removes the first length characters and the last one.
void cut_message_to_trim_newline(char *text, std::size_t length);

/// Removes the first length characters and leaves the value behind a separator of blanks, tabs and
/// "=", up to the first blank or tab.
void cutparamto(char *text, std::size_t length);

/// Removes the first length characters and leaves the value behind a separator of blanks, tabs,
/// single quotes and vertical bars, up to the first blank, tab or single quote.
void cutqueryparamto(char *text, std::size_t length);
