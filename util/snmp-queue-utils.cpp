#include "util/snmp-queue-utils.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "util/assertion.h"

namespace quillet {
namespace {

template <typename Queue, typename Node>
void append(Queue* q, Node* node) {
  node->prev = q->tail;
  node->next = nullptr;
  (q->tail != nullptr ? q->tail->next : q->head) = node;
  q->tail = node;
  ++q->count;
}

template <typename Queue, typename Node>
void unlink(Queue* q, Node* node) {
  (node->prev != nullptr ? node->prev->next : q->head) = node->next;
  (node->next != nullptr ? node->next->prev : q->tail) = node->prev;
  --q->count;
}

// A malloc'ed copy of n octets with a NUL at its end.
char* terminated_copy(const char* bytes, int n) {
  const auto size = static_cast<std::size_t>(n);
  auto* copy = static_cast<char*>(std::malloc(size + 1));
  if (size > 0) std::memcpy(copy, bytes, size);
  copy[size] = '\0';
  return copy;
}

int compare_slots(const void* a, const void* b) {
  return std::strcmp(static_cast<const char*>(a), static_cast<const char*>(b));
}

qmap_str_str_entry* find_entry(const qmap_str_str* m, const char* key) {
  for (qmap_str_str_entry* entry = m->head; entry != nullptr; entry = entry->next) {
    if (std::strcmp(entry->key, key) == 0) return entry;
  }
  return nullptr;
}

}  // namespace

queue_int* queue_int_new() { return new queue_int{}; }

void queue_int_destroy(queue_int* q) {
  QUILLET_ASSERT(q != NULL);
  while (q->count > 0) queue_int_out(q);
  delete q;
}

void queue_int_in(queue_int* q, int value) {
  QUILLET_ASSERT(q != NULL);
  append(q, new queue_int_node{.value = value, .prev = nullptr, .next = nullptr});
}

int queue_int_out(queue_int* q) {
  QUILLET_ASSERT(q != NULL);
  queue_int_node* node = q->head;
  if (node == nullptr) return -1;
  unlink(q, node);
  const int value = node->value;
  delete node;
  return value;
}

int queue_int_get_item(const queue_int* q, int i) {
  QUILLET_ASSERT(q != NULL);
  if (i < 0 || i >= q->count) return -1;
  const queue_int_node* node = q->head;
  while (i-- > 0) node = node->next;
  return node->value;
}

queue_chararr* queue_chararr_new() { return new queue_chararr{}; }

void queue_chararr_destroy(queue_chararr* q) {
  QUILLET_ASSERT(q != NULL);
  int length = 0;
  while (q->count > 0) std::free(queue_chararr_out(q, &length));
  delete q;
}

void queue_chararr_in(queue_chararr* q, const char* bytes, int n) {
  QUILLET_ASSERT(q != NULL);
  append(q, new queue_chararr_node{.data = terminated_copy(bytes, n),
                                   .stored_length = n + 1,
                                   .prev = nullptr,
                                   .next = nullptr});
}

char* queue_chararr_out(queue_chararr* q, int* length) {
  QUILLET_ASSERT(q != NULL);
  *length = 0;
  queue_chararr_node* node = q->head;
  if (node == nullptr) return nullptr;
  unlink(q, node);
  char* data = node->data;
  *length = node->stored_length;
  delete node;
  return data;
}

int queue_chararr_maxlen(const queue_chararr* q) {
  QUILLET_ASSERT(q != NULL);
  int longest = 0;
  for (const queue_chararr_node* node = q->head; node != nullptr; node = node->next) {
    longest = std::max(longest, node->stored_length);
  }
  return longest;
}

int queue_chararr_contains(const queue_chararr* q, const char* bytes, int n) {
  QUILLET_ASSERT(q != NULL);
  for (const queue_chararr_node* node = q->head; node != nullptr; node = node->next) {
    if (node->stored_length == n + 1 &&
        std::strncmp(node->data, bytes, static_cast<std::size_t>(n)) == 0) {
      return 1;
    }
  }
  return 0;
}

char* queue_chararr_to_sorted_array(const queue_chararr* q, queue_chararr_iter* iter) {
  if (q == nullptr || iter == nullptr || q->count == 0) return nullptr;
  const int maxlen = queue_chararr_maxlen(q);
  if (maxlen < 1) return nullptr;
  const auto count = static_cast<std::size_t>(q->count);
  const auto width = static_cast<std::size_t>(maxlen);
  auto* array = static_cast<char*>(std::calloc(count, width));
  char* slot = array;
  for (const queue_chararr_node* node = q->head; node != nullptr; node = node->next) {
    std::memcpy(slot, node->data, static_cast<std::size_t>(node->stored_length));
    slot += width;
  }
  std::qsort(array, count, width, compare_slots);
  iter->count = q->count;
  return array;
}

queue_chararr_iter* queue_chararr_iter_new(const queue_chararr* q) {
  QUILLET_ASSERT(q != NULL);
  auto* iter = static_cast<queue_chararr_iter*>(std::calloc(1, sizeof(queue_chararr_iter)));
  iter->width = queue_chararr_maxlen(q);
  iter->array = queue_chararr_to_sorted_array(q, iter);
  return iter;
}

char* queue_chararr_iter_next(queue_chararr_iter* iter) {
  const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(iter->index) * iter->width;
  ++iter->index;
  return iter->array + offset;
}

void queue_chararr_iter_destroy(queue_chararr_iter* iter) {
  if (iter == nullptr) return;
  std::free(iter->array);
  std::free(iter);
}

qmap_str_str* qmap_str_str_new() { return new qmap_str_str{}; }

void qmap_str_str_destroy(qmap_str_str* m) {
  QUILLET_ASSERT(m != NULL);
  for (qmap_str_str_entry* entry = m->head; entry != nullptr;) {
    qmap_str_str_entry* next = entry->next;
    qmap_str_str_del(m, entry->key);
    entry = next;
  }
  delete m;
}

void qmap_str_str_set(qmap_str_str* m, const char* key, const char* value, int n) {
  QUILLET_ASSERT(m != NULL);
  char* copy = terminated_copy(value, n);
  if (qmap_str_str_entry* entry = find_entry(m, key); entry != nullptr) {
    std::free(entry->value);
    entry->value = copy;
    return;
  }
  append(m, new qmap_str_str_entry{
                .key = strdup(key), .value = copy, .next = nullptr, .prev = nullptr});
}

void qmap_str_str_del(qmap_str_str* m, const char* key) {
  QUILLET_ASSERT(m != NULL);
  qmap_str_str_entry* entry = find_entry(m, key);
  if (entry == nullptr) return;
  unlink(m, entry);
  std::free(entry->key);
  std::free(entry->value);
  delete entry;
}

const char* qmap_str_str_value(const qmap_str_str* m, const char* key) {
  QUILLET_ASSERT(m != NULL);
  const qmap_str_str_entry* entry = find_entry(m, key);
  return entry != nullptr ? entry->value : nullptr;
}

void qmap_str_str_print(const qmap_str_str* m) {
  QUILLET_ASSERT(m != NULL);
  std::printf("\nprinting validation map (len: %d) >>>\n", m->count);
  for (const qmap_str_str_entry* entry = m->head; entry != nullptr; entry = entry->next) {
    std::printf("\t%s => %s\n", entry->key, entry->value);
  }
}

}  // namespace quillet
