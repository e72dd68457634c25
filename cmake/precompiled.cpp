// Nothing: a set of precompiled headers needs a source (OrvoPrecompiled.cmake).
