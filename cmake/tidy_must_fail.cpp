// Holds what the clang-tidy configuration must refuse; scripts/check proves with it that the configuration
// works.
int* MustFail(bool flag) {
  int* nothing = 0;
  if (flag) return nothing;
  int value = 1;
  if (value = 2) return nullptr;
  return nothing;
}
