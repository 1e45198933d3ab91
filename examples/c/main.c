/* SPDX-License-Identifier: MIT */
/* Lists a folder in C, in a loop of poll: finds the provider, then lists the entries. */
#include <poll.h>
#include <stdio.h>

#include "SorvikProvider/c/sorvik.h"

typedef struct Browser {
  sorvik_queue* queue;
  sorvik_request* request; /* the one that runs */
  int running;
  int failed;
} Browser;

static void Receive(sorvik_request* request, sorvik_event* event, void* context);

static void ListCard(Browser* browser, const sorvik_card* card) {
  const sorvik_receiver receiver = {browser->queue, Receive, browser};
  const sorvik_text provider = sorvik_card_provider(card);
  printf("%s\n", provider.data);
  if (sorvik_start_list(sorvik_card_path(card).data, provider.data, NULL, &receiver,
                        &browser->request) == SORVIK_OK) {
    browser->running++;
  }
}

static void PrintEntries(const sorvik_listing* listing) {
  for (size_t i = 0; i < sorvik_listing_size(listing); ++i) {
    const sorvik_field* name = sorvik_entry_field(sorvik_listing_at(listing, i), "Name");
    if (name != NULL) printf("  %s\n", name->value.text.data);
  }
}

/* Called by sorvik_queue_dispatch, on this program's only thread. */
static void Receive(sorvik_request* request, sorvik_event* event, void* context) {
  Browser* browser = context;
  sorvik_card* card = sorvik_event_take_card(event);
  sorvik_listing* listing = sorvik_event_take_listing(event);
  if (card != NULL) ListCard(browser, card);
  if (listing != NULL) PrintEntries(listing);
  if (sorvik_event_get_kind(event) == SORVIK_EVENT_END) {
    if (sorvik_event_status(event) != SORVIK_OK) {
      fprintf(stderr, "%s: %s\n", sorvik_event_path(event).data, sorvik_event_text(event).data);
      browser->failed = 1;
    }
    browser->running--;
    sorvik_request_free(request);
  }
  sorvik_listing_free(listing);
  sorvik_card_free(card);
}

int main(int count, char** arguments) {
  if (count != 2) {
    fprintf(stderr, "usage: c-poll-loop PATH\n");
    return 2;
  }
  Browser browser = {NULL, NULL, 0, 0};
  if (sorvik_initialize() != SORVIK_OK || sorvik_queue_create(&browser.queue) != SORVIK_OK) {
    fprintf(stderr, "%s\n", sorvik_error_text());
    return 1;
  }
  const sorvik_receiver receiver = {browser.queue, Receive, &browser};
  if (sorvik_start_open(arguments[1], NULL, SORVIK_OPEN_NEARBY, &receiver, &browser.request) !=
      SORVIK_OK) {
    fprintf(stderr, "%s: %s\n", arguments[1], sorvik_error_text());
    browser.failed = 1;
  } else {
    browser.running = 1;
  }
  struct pollfd waiting = {sorvik_queue_descriptor(browser.queue), POLLIN, 0};
  while (browser.running > 0 && poll(&waiting, 1, -1) >= 0) {
    sorvik_queue_dispatch(browser.queue, 64);
  }
  sorvik_queue_free(browser.queue);
  sorvik_shutdown();
  return browser.failed;
}
