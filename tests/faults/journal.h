/* What the interposer and the tests agree on about its journal: a text of one line per call, its
 * name and its number among the calls of that name, ended by a zero byte. */

#pragma once

#define JOURNAL_SIZE 1048576
#define FAULT_MARK "! " /* opens the line of a call that failed */
