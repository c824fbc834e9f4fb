/* What a unit can do to whoever runs it, for tests of the latter. */
#ifndef KS_TEST_UNITS_HOSTILE_H
#define KS_TEST_UNITS_HOSTILE_H

/* Writes over the memory that it shares with its parent: some bytes in most calls, all of it in others. The same seed
 * writes the same. */
void writeOverSharedMemory(unsigned seed);
void closeAllFiles(void);
/* Processes that do not end by themselves; they are called "kshmi-left". */
void leaveProcesses(void);

#endif
