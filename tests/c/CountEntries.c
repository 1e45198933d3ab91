/* SPDX-License-Identifier: MIT */
/* A caller in C11, which includes nothing but the header. */
#include "SorvikProvider/c/sorvik.h"

int CountEntriesFromC(const char* path, const char* provider);

/* Returns the number of entries; -1 if they can't be listed. */
int CountEntriesFromC(const char* path, const char* provider) {
  sorvik_listing* listing = NULL;
  if (sorvik_list(path, provider, NULL, &listing) != SORVIK_OK) return -1;
  int count = 0;
  while (sorvik_listing_at(listing, (size_t)count) != NULL) ++count;
  sorvik_listing_free(listing);
  return count;
}
