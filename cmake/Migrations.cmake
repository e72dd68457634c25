# orvo_migrations(<file> <database>...): writes a source with the texts of
# migrations/<database>/<version>.sql for platform/store/Migrations.h, versions from 1 on.
function(orvo_migrations file)
  set(source "// Generated from migrations/*/*.sql.\n#include \"platform/store/Migrations.h\"\n")
  string(APPEND source "\nnamespace orvo::store {\n")
  foreach(database ${ARGN})
    string(APPEND source "\nconst MigrationSteps& ${database}::migrations() {\n"
      "    static const MigrationSteps steps = {\n")
    set(version 1)
    while(EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/migrations/${database}/${version}.sql")
      set(step "${CMAKE_CURRENT_SOURCE_DIR}/migrations/${database}/${version}.sql")
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${step}")
      file(READ "${step}" text)
      string(APPEND source "R\"orvo_sql(${text})orvo_sql\",\n")
      math(EXPR version "${version} + 1")
    endwhile()
    string(APPEND source "    };\n    return steps;\n}\n")
    # A step with a number that leaves a gap would never run.
    file(GLOB all CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/migrations/${database}/*.sql")
    list(LENGTH all count)
    math(EXPR found "${version} - 1")
    if(NOT count EQUAL found)
      message(FATAL_ERROR "migrations/${database}: ${count} steps, but ${found} in sequence")
    endif()
  endforeach()
  string(APPEND source "\n} // namespace orvo::store\n")
  file(WRITE "${file}.new" "${source}")
  configure_file("${file}.new" "${file}" COPYONLY) # keeps the time of a file that stays the same
endfunction()
