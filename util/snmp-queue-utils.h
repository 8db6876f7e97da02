// Small containers of the transforms: an integer queue, a string queue with a sorted copy, and a
// string map. Doubly linked, with linear look-ups: they hold at most a table's worth of names.
//
// Every function but the constructors asserts that its container is not null. Strings, arrays and
// iterators that are handed out are malloc'ed.
#pragma once

namespace quillet {

struct queue_int_node {
  int value;
  queue_int_node* prev;
  queue_int_node* next;
};
struct queue_int {
  int count;
  queue_int_node* head;
  queue_int_node* tail;
};

queue_int* queue_int_new();
void queue_int_destroy(queue_int* q);
void queue_int_in(queue_int* q, int value);
// Takes the head; -1 when empty.
int queue_int_out(queue_int* q);
// The value at a position from the head, or -1.
int queue_int_get_item(const queue_int* q, int i);

struct queue_chararr_node {
  char* data;         // a copy with a NUL at its end
  int stored_length;  // the NUL included
  queue_chararr_node* prev;
  queue_chararr_node* next;
};
struct queue_chararr {
  int count;
  queue_chararr_node* head;
  queue_chararr_node* tail;
};
// A sorted copy of a queue: `count` slots of `width` octets, padded with NUL.
struct queue_chararr_iter {
  int count;
  int width;
  int index;
  char* array;
};

queue_chararr* queue_chararr_new();
void queue_chararr_destroy(queue_chararr* q);
// Appends a copy of n octets.
void queue_chararr_in(queue_chararr* q, const char* bytes, int n);
// Takes the head's string and stored length; null and 0 when empty. The caller frees the string.
char* queue_chararr_out(queue_chararr* q, int* length);
// The largest stored length; 0 when empty.
int queue_chararr_maxlen(const queue_chararr* q);
// 1 when a string of exactly these n octets is in the queue, else 0.
int queue_chararr_contains(const queue_chararr* q, const char* bytes, int n);
// The slots, sorted by strcmp, and the iterator's count; null for an empty or null queue or a null
// iterator. The caller frees the array.
char* queue_chararr_to_sorted_array(const queue_chararr* q, queue_chararr_iter* iter);
// The iterator does not refer to the queue afterwards.
queue_chararr_iter* queue_chararr_iter_new(const queue_chararr* q);
// The slot at the index, which advances. REQUIRES: index < count.
char* queue_chararr_iter_next(queue_chararr_iter* iter);
// Frees the array and the iterator; null is allowed.
void queue_chararr_iter_destroy(queue_chararr_iter* iter);

struct qmap_str_str_entry {
  char* key;
  char* value;
  qmap_str_str_entry* next;
  qmap_str_str_entry* prev;
};
// Entries keep the order in which their keys came.
struct qmap_str_str {
  int count;
  qmap_str_str_entry* head;
  qmap_str_str_entry* tail;
};

qmap_str_str* qmap_str_str_new();
void qmap_str_str_destroy(qmap_str_str* m);
// Sets the key's value to a copy of n octets.
void qmap_str_str_set(qmap_str_str* m, const char* key, const char* value, int n);
void qmap_str_str_del(qmap_str_str* m, const char* key);
// Owned by the map; null when the key is absent.
const char* qmap_str_str_value(const qmap_str_str* m, const char* key);
// On standard output.
void qmap_str_str_print(const qmap_str_str* m);

}  // namespace quillet
