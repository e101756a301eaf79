// A stand-in for SslBridge.exe in the Windows program test: the program only
// has to be able to start it. It ends at once; the program's probe then finds
// no companion, which start-up tolerates.
int main() {
  return 0;
}
