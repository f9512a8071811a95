/* The runtime stand-ins have no code of their own: their .def files forward
   every export to msvcrt.dll. The linker still wants one object. */
int trel_runtime_stand_in;
