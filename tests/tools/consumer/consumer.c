/* Prints the title and the main text of the page named by argv[1] through
 * the C interface. */
#include <stdio.h>
#include <stdlib.h>

#include <zestra/zestra_c.h>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  FILE* file = fopen(argv[1], "rb");
  if (file == NULL) return 2;
  char* bytes = NULL;
  size_t size = 0;
  char chunk[4096];
  size_t got;
  while ((got = fread(chunk, 1, sizeof chunk, file)) > 0) {
    char* grown = realloc(bytes, size + got);
    if (grown == NULL) return 2;
    bytes = grown;
    for (size_t i = 0; i < got; ++i) bytes[size + i] = chunk[i];
    size += got;
  }
  fclose(file);

  zestra_options options;
  zestra_options_init(&options);
  zestra_result* page = NULL;
  const zestra_status status = zestra_extract(bytes, size, &options, &page);
  free(bytes);
  if (status != ZESTRA_OK) return 3;
  printf("%s\n%s\n", page->title, page->charset_name);
  fwrite(page->text, 1, page->text_size, stdout);
  const int empty = page->text_size == 0;
  zestra_result_free(page);
  return empty ? 1 : 0;
}
