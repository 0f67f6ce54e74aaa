// Sample WSDL PAGING_SERVER [SECOND_PAGING_SERVER]: sends a message, asks about it, adds a group, and is refused once.
// Status 1 when the message was not sent, or something else failed.

import java.net.URL;
import java.util.List;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

import quorbel.CustomFieldData;
import quorbel.QueryResult;
import quorbel.Quorbel;
import quorbel.QuorbelSoap;
import quorbel.ResponseActionData;
import quorbel.ServiceFault;

public class Sample {
    static ResponseActionData choice(String response, String action, boolean isFinal) {
        ResponseActionData choice = new ResponseActionData();
        choice.setSzResponse(response);
        choice.setSzAction(action);
        choice.setBFinal(isFinal);
        return choice;
    }

    static CustomFieldData field(String name, String value) {
        CustomFieldData field = new CustomFieldData();
        field.setSzFieldName(name);
        field.setSzFieldValue(value);
        return field;
    }

    static int run(String[] args) throws Exception {
        String pager = args[1], second = args.length > 2 ? args[2] : null;
        QuorbelSoap service = new Quorbel(new URL(args[0])).getQuorbelSoap();
        // When the service is reached by another address than its description names:
        // ((BindingProvider) service).getRequestContext().put(BindingProvider.ENDPOINT_ADDRESS_PROPERTY, "https://...");

        // The arguments are the elements in the description's order; null leaves one out.
        String text = service.sendStdMessage(
            pager, null, null, "oncall", null, 2, true,
            List.of(choice("1", "ack", true), choice("2", "escalate", false)),
            List.of(field("ticket", "T-7")),
            "Pump 4 <hot> & \"loud\"", "ops", null, null, second);
        // A message that could not be delivered is no fault: the text then is the transport's. The paging server names
        // a job.
        Matcher job = Pattern.compile("job (\\S+)").matcher(text);
        if (!job.find()) {
            System.out.println("not sent: " + text.strip());
            return 1;
        }
        System.out.println("sent: " + text.strip());

        QueryResult answer = service.queryMessage(pager, null, null, job.group(1), second);
        System.out.println("query: " + answer.getSzResponseMessage());
        if (answer.getSzResult() != null) for (String line : answer.getSzResult().getString()) System.out.println("  " + line);

        String added = service.addGroup(pager, "admin", "secret", "night", "Night shift", null, null, null, null,
                                        true, null, second);
        System.out.println("added: " + added.strip());

        try {
            service.deleteGroup(pager, "admin", "", "night", null);
        } catch (ServiceFault fault) {
            System.out.println("fault: " + fault.getMessage());
        }
        return 0;
    }

    public static void main(String[] args) {
        int status = 1;
        try {
            status = run(args);
        } catch (ServiceFault fault) {
            System.out.println("fault: " + fault.getMessage());
        } catch (Exception failure) {
            System.out.println("no answer from the service: " + failure.getMessage());
        }
        System.exit(status);
    }
}
