# Labels with dots, as assembly programs like them. Everything here assembles for 32 and 64 bits.

        .data
        .balign 4
        .globl  table.first, table.last, table.size
table.first:
        .long   11
        .long   22
        .long   33
table.last:
        .long   44
table.end:
        .set    table.size, table.end - table.first
limit:
        .short  500

        .text
        .globl  table_pick
        .type   table_pick, @function
table_pick:
        movl    $7, %eax
table.done:
        ret
        .size   table_pick, . - table_pick

        .section .note.GNU-stack, "", @progbits
